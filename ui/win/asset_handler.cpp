// The WebResourceRequested handler: the resolver's answer copied into a
// fresh memory stream and a runtime response; see asset_handler.h.
#include "ui/win/asset_handler.h"

#include <memory>
#include <string>

#include "ui/asset_routes.h"
#include "ui/page_origin.h"
#include "ui/win/com_handler.h"
#include "ui/win/webview_iids.h"

namespace webview {
namespace {

constexpr int kNotFoundStatus = 404;
constexpr wchar_t kNotFoundReason[] = L"Not Found";
constexpr wchar_t kNotFoundHeaders[] = L"Content-Length: 0\r\n";

// The body in a memory stream of its own, rewound; empty when any step fails.
ComRef<IStream> MemoryStream(const std::vector<std::uint8_t>& body) {
  IStream* raw = nullptr;
  if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, &raw)) || raw == nullptr) return nullptr;
  ComRef<IStream> stream(raw);
  ULONG written = 0;
  if (FAILED(stream->Write(body.data(), static_cast<ULONG>(body.size()), &written)) || written != body.size()) {
    return nullptr;
  }
  if (FAILED(stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr))) return nullptr;
  return stream;
}

ComRef<ICoreWebView2WebResourceResponse> MakeResponse(ICoreWebView2Environment* environment, IStream* body,
                                                       int status, const std::wstring& reason,
                                                       const std::wstring& headers) {
  ICoreWebView2WebResourceResponse* response = nullptr;
  environment->CreateWebResourceResponse(body, status, reason.c_str(), headers.c_str(), &response);
  return ComRef<ICoreWebView2WebResourceResponse>(response);
}

// The resolver's answer, or a 404 when it cannot be put into a stream.
ComRef<ICoreWebView2WebResourceResponse> Answer(ICoreWebView2Environment* environment, const std::wstring& uri) {
  const SAssetResponse asset = ResolveAssetRequest(uri);
  if (asset.statusCode != kNotFoundStatus && !asset.body.empty()) {
    if (const ComRef<IStream> stream = MemoryStream(asset.body)) {
      return MakeResponse(environment, stream.get(), asset.statusCode, std::wstring(asset.reasonPhrase),
                          std::wstring(asset.headers));
    }
  }
  return MakeResponse(environment, nullptr, kNotFoundStatus, kNotFoundReason, kNotFoundHeaders);
}

}  // namespace

HRESULT RegisterAssetHandler(ICoreWebView2* view, ICoreWebView2Environment* environment) {
  const std::wstring filter = std::wstring(PageOrigin()) + L"*";
  const HRESULT filtered = view->AddWebResourceRequestedFilter(filter.c_str(), COREWEBVIEW2_WEB_RESOURCE_CONTEXT_ALL);
  if (FAILED(filtered)) return filtered;
  // The handler keeps the environment it makes responses with.
  const auto handler =
      CComHandler<ICoreWebView2WebResourceRequestedEventHandler, ICoreWebView2*,
                  ICoreWebView2WebResourceRequestedEventArgs*>::Make(
          kIidWebResourceRequested,
          [environment = std::shared_ptr<ICoreWebView2Environment>(KeepReference(environment))](ICoreWebView2*,
                                                     ICoreWebView2WebResourceRequestedEventArgs* args) -> HRESULT {
            ICoreWebView2WebResourceRequest* request = nullptr;
            LPWSTR uri = nullptr;
            if (SUCCEEDED(args->get_Request(&request)) && request != nullptr) {
              request->get_Uri(&uri);
              request->Release();
            }
            if (const auto response = Answer(environment.get(), TakeComString(uri))) {
              args->put_Response(response.get());
            }
            return S_OK;
          });
  EventRegistrationToken token{};
  return view->add_WebResourceRequested(handler.get(), &token);
}

}  // namespace webview
