// libcurl's easy interface, one handle per request, set up to behave like the
// WinHTTP twin:
// - resolve and connect share CURLOPT_CONNECTTIMEOUT_MS;
// - the receive time-out is an idle limit: the request fails once no body
//   byte has arrived for that long (checked from the progress callback, which
//   libcurl calls at least once a second);
// - the minimum body rate (CBodyRateFloor, from the response on) is checked
//   there too, as WinHTTP's read loop checks it;
// - the send time-out has no libcurl counterpart; a GET sends only its
//   headers, and a stall there runs into the idle limit as well;
// - gzip and deflate bodies are decoded; HTTP/2 is used where TLS offers it;
// - redirects are followed as WinHTTP follows them (at most 10, never from
//   https to http);
// - certificates are checked against OpenSSL's default store instead of the
//   bundle compiled into libcurl, so SSL_CERT_FILE and SSL_CERT_DIR work as
//   OpenSSL documents them.
#include <curl/curl.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "net/body_rate_floor.h"
#include "net/http_transport.h"
#include "text/utf.h"

namespace net {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kAcceptEncoding[] = "gzip, deflate";
constexpr long kMaxRedirects = 10;
// libcurl hands the body over in pieces of at most 16 KiB. Gathered into
// 32 KiB reads, a download makes half the file writes and the kernel fills
// the page cache in 32 KiB folios, which it serves from its per-CPU free
// lists: a quarter less system time in a 1 GiB patch. Larger reads did
// worse: from 64 KiB up, each folio is carved from a larger free block,
// and on a virtual machine whose host takes back freed memory that cost
// more than the fewer writes saved (256 KiB doubled the system time).
constexpr std::size_t kGatherSize = 32 * 1024;

void EnsureCurlInitialised() {
  // Runs once, before the first handle; static initialisation is thread-safe.
  static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
  static_cast<void>(initialised);
}

struct SCurlDeleter {
  void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

std::string EnvironmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

// OpenSSL's default trust store, loaded once and shared by every transfer.
// Loading parses the whole system bundle (about 25 ms of CPU for Debian's
// 145 certificates), and each transfer has a TLS context of its own, so
// loading it per transfer cost more than the transfer itself for small
// blobs. The store is loaded again when SSL_CERT_FILE or SSL_CERT_DIR (or
// the verification flags libcurl asks for) change. The last store is kept
// for the life of the process.
class CSharedTrustStore {
 public:
  // A store with one reference for the caller, or null when none could be made.
  X509_STORE* Acquire(unsigned long flags) {
    std::string key = EnvironmentValue("SSL_CERT_FILE") + '\n' + EnvironmentValue("SSL_CERT_DIR") + '\n' +
                      std::to_string(flags);
    const std::lock_guard lock(mutex_);
    if (store_ == nullptr || key != key_) {
      X509_STORE* fresh = X509_STORE_new();
      if (fresh == nullptr || X509_STORE_set_default_paths(fresh) != 1 || X509_STORE_set_flags(fresh, flags) != 1) {
        X509_STORE_free(fresh);
        return nullptr;
      }
      X509_STORE_free(store_);
      store_ = fresh;
      key_ = std::move(key);
    }
    return X509_STORE_up_ref(store_) == 1 ? store_ : nullptr;
  }

 private:
  std::mutex mutex_;
  X509_STORE* store_ = nullptr;
  std::string key_;
};

CURLcode UseOpenSslDefaultStore(CURL*, void* sslContext, void*) {
  static CSharedTrustStore shared;
  auto* context = static_cast<SSL_CTX*>(sslContext);
  const unsigned long flags = X509_VERIFY_PARAM_get_flags(X509_STORE_get0_param(SSL_CTX_get_cert_store(context)));
  X509_STORE* store = shared.Acquire(flags);
  if (store == nullptr) return CURLE_SSL_CACERT_BADFILE;
  SSL_CTX_set_cert_store(context, store);  // takes over the reference
  return CURLE_OK;
}

SHttpResponseFacts QueryFacts(CURL* curl) {
  SHttpResponseFacts facts;
  long status = 0;
  if (curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status) == CURLE_OK) facts.status = static_cast<std::uint32_t>(status);
  curl_off_t length = -1;
  if (curl_easy_getinfo(curl, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length) == CURLE_OK && length >= 0) {
    facts.contentLength = static_cast<std::uint64_t>(length);
  }
  curl_header* range = nullptr;
  if (curl_easy_header(curl, "Content-Range", 0, CURLH_HEADER, -1, &range) == CURLHE_OK) {
    facts.contentRangeTotal = ParseContentRangeTotal(text::Utf8ToWide(range->value));
  }
  return facts;
}

std::string ComposeUrl(const SHttpUrl& url) {
  return (url.secure ? "https://" : "http://") + text::WideToUtf8(url.host) + ":" + std::to_string(url.port) +
         text::WideToUtf8(url.pathAndQuery);
}

// State shared with libcurl's callbacks during one perform.
class CCurlTransfer {
 public:
  CCurlTransfer(CURL* curl, CHttpResponseHandler& handler, const LauncherConfig& config)
      : curl_(curl),
        handler_(handler),
        config_(config),
        idleLimit_(config.receiveTimeoutMs),
        lastActivity_(Clock::now()) {}

  static std::size_t OnWrite(char* data, std::size_t size, std::size_t count, void* self) {
    return static_cast<CCurlTransfer*>(self)->Write(data, size * count);
  }

  static int OnProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t) {
    return static_cast<CCurlTransfer*>(self)->TimedOut(received) ? 1 : 0;
  }

  ETransferOutcome Finish(CURLcode result, const char* detail, std::wstring& error) {
    // Bytes gathered before the end, or before a failure, are handed over all the same.
    if (!stopped_ && !HandOver()) stopped_ = true;
    if (stopped_) return ETransferOutcome::Stopped;
    if (result == CURLE_OK) return DeliverResponse() ? ETransferOutcome::Completed : ETransferOutcome::Stopped;
    if (timedOut_) {
      error = text::Utf8ToWide(curl_easy_strerror(CURLE_OPERATION_TIMEDOUT));
    } else {
      error = text::Utf8ToWide(detail[0] != '\0' ? detail : curl_easy_strerror(result));
    }
    return responseDelivered_ ? ETransferOutcome::ReadFailed : ETransferOutcome::RequestFailed;
  }

 private:
  std::size_t Write(const char* data, std::size_t size) {
    if (!DeliverResponse()) return Stop();
    bodyBytes_ += size;
    for (std::size_t done = 0; done < size;) {
      if (room_.empty()) room_ = handler_.ReadBuffer(kGatherSize);
      const std::size_t count = std::min(room_.size() - gathered_, size - done);
      std::memcpy(room_.data() + gathered_, data + done, count);
      gathered_ += count;
      done += count;
      if (gathered_ == room_.size() && !HandOver()) return Stop();
    }
    return size;
  }

  // Passes what was gathered to the handler as one read.
  bool HandOver() {
    const std::size_t count = std::exchange(gathered_, 0);
    room_ = {};
    return count == 0 || handler_.OnBodyRead(count);
  }

  // Any return value other than the size handed in makes libcurl give up.
  std::size_t Stop() {
    stopped_ = true;
    return 0;
  }

  bool DeliverResponse() {
    if (!responseDelivered_) {
      responseDelivered_ = true;
      bodyWanted_ = handler_.OnResponse(QueryFacts(curl_));
      rateFloor_.emplace(config_);
    }
    return bodyWanted_;
  }

  // Idle for longer than the receive time-out, or a body below the minimum rate.
  bool TimedOut(curl_off_t received) {
    const auto now = Clock::now();
    if (received != lastReceived_) {
      lastReceived_ = received;
      lastActivity_ = now;
    }
    timedOut_ = now - lastActivity_ > idleLimit_ || (rateFloor_ && rateFloor_->Missed(bodyBytes_, now));
    return timedOut_;
  }

  CURL* curl_;
  CHttpResponseHandler& handler_;
  const LauncherConfig& config_;
  std::span<std::uint8_t> room_;
  std::size_t gathered_ = 0;
  const std::chrono::milliseconds idleLimit_;
  Clock::time_point lastActivity_;
  curl_off_t lastReceived_ = 0;
  std::optional<CBodyRateFloor> rateFloor_;  // from the response on
  std::uint64_t bodyBytes_ = 0;
  bool responseDelivered_ = false;
  bool bodyWanted_ = false;
  bool stopped_ = false;
  bool timedOut_ = false;
};

}  // namespace

ETransferOutcome PerformHttpGet(const LauncherConfig& config, const SHttpRequest& request,
                                CHttpResponseHandler& handler, std::wstring& error) {
  EnsureCurlInitialised();
  const std::unique_ptr<CURL, SCurlDeleter> handle(curl_easy_init());
  if (!handle) {
    error = text::Utf8ToWide(curl_easy_strerror(CURLE_FAILED_INIT));
    return ETransferOutcome::RequestFailed;
  }
  CURL* curl = handle.get();
  std::unique_ptr<curl_slist, SCurlDeleter> headers;
  if (const std::string range = RangeHeaderValue(request); !range.empty()) {
    headers.reset(curl_slist_append(nullptr, ("Range: " + range).c_str()));
  }
  const std::string url = ComposeUrl(request.url);
  const std::string userAgent = text::WideToUtf8(config.userAgent);
  char detail[CURL_ERROR_SIZE] = {};
  CCurlTransfer transfer(curl, handler, config);

  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(curl, CURLOPT_HTTPGET, 1L);
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(curl, CURLOPT_USERAGENT, userAgent.c_str());
  if (!request.rangeLast) curl_easy_setopt(curl, CURLOPT_ACCEPT_ENCODING, kAcceptEncoding);
  curl_easy_setopt(curl, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(config.resolveConnectTimeoutMs));
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(curl, CURLOPT_MAXREDIRS, kMaxRedirects);
  curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, request.url.secure ? "https" : "http,https");
  if (curl_easy_setopt(curl, CURLOPT_SSL_CTX_FUNCTION, &UseOpenSslDefaultStore) == CURLE_OK) {
    curl_easy_setopt(curl, CURLOPT_CAINFO, nullptr);
    curl_easy_setopt(curl, CURLOPT_CAPATH, nullptr);
  }
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, detail);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &CCurlTransfer::OnWrite);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &transfer);
  curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &CCurlTransfer::OnProgress);
  curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &transfer);

  return transfer.Finish(curl_easy_perform(curl), detail, error);
}

}  // namespace net
