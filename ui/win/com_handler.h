#pragma once
// WebView2 reports completion and events through one-method COM interfaces.
// Without WRL each needs IUnknown written out; this template does it once and
// forwards Invoke to a function object.

#include <unknwn.h>

#include <atomic>
#include <functional>
#include <utility>

#include "ui/win/com_ref.h"

namespace webview {

template <typename TInterface, typename... TArgs>
class CComHandler final : public TInterface {
 public:
  using Function = std::function<HRESULT(TArgs...)>;

  // A new handler holding the only reference; mingw-w64 has no __uuidof for
  // these interfaces, so the caller names the interface's IID.
  static ComRef<TInterface> Make(const IID& iid, Function function) {
    return ComRef<TInterface>(new CComHandler(iid, std::move(function)));
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, iid_)) {
      *object = static_cast<TInterface*>(this);
      AddRef();
      return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE Invoke(TArgs... args) override { return function_(args...); }

 private:
  CComHandler(const IID& iid, Function function) : iid_(iid), function_(std::move(function)) {}
  ~CComHandler() = default;

  const IID iid_;
  Function function_;
  std::atomic<ULONG> references_{1};
};

}  // namespace webview
