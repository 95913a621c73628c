#pragma once
// Ownership of one COM reference without WRL (which mingw-w64 lacks): the
// pointer is released when the holder goes.

#include <objbase.h>
#include <unknwn.h>

#include <memory>
#include <string>

namespace webview {

struct SComRelease {
  void operator()(IUnknown* object) const { object->Release(); }
};

template <typename TInterface>
using ComRef = std::unique_ptr<TInterface, SComRelease>;

// A reference of our own to an object we were only lent (event arguments).
template <typename TInterface>
ComRef<TInterface> KeepReference(TInterface* object) {
  if (object != nullptr) object->AddRef();
  return ComRef<TInterface>(object);
}

// The object's `iid` interface, or empty when it has none.
template <typename TInterface>
ComRef<TInterface> QueryReference(IUnknown* object, const IID& iid) {
  TInterface* result = nullptr;
  if (object == nullptr || FAILED(object->QueryInterface(iid, reinterpret_cast<void**>(&result)))) return nullptr;
  return ComRef<TInterface>(result);
}

// Takes a string the runtime allocated with CoTaskMemAlloc, freeing it.
inline std::wstring TakeComString(LPWSTR text) {
  std::wstring result = text != nullptr ? text : L"";
  CoTaskMemFree(text);
  return result;
}

}  // namespace webview
