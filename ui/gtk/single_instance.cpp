#include "ui/gtk/single_instance.h"

#include <fcntl.h>
#include <gio/gunixsocketaddress.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "platform/path_text.h"

namespace {

constexpr char kLockFileName[] = "launcher.lock";
constexpr char kRaiseRequest[] = "raise\n";

// An abstract socket named after the user and the lock's folder: no file to
// leave behind, and no limit from the folder's path length.
std::string RaiseSocketName(const std::filesystem::path& folder) {
  std::uint64_t hash = 14695981039346656037u;  // FNV-1a: the same name in every launcher build
  for (const unsigned char c : folder.string()) hash = (hash ^ c) * 1099511628211u;
  char name[64];
  std::snprintf(name, sizeof(name), "vardeni-launcher-%u-%016llx", static_cast<unsigned>(getuid()),
                static_cast<unsigned long long>(hash));
  return name;
}

void AskToRaise(const std::string& socketName) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path + 1, socketName.data(), socketName.size());  // sun_path[0] = 0: abstract
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + socketName.size());
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), length) == 0) {
    [[maybe_unused]] const ssize_t sent = write(fd, kRaiseRequest, sizeof(kRaiseRequest) - 1);
  }
  close(fd);
}

}  // namespace

CSingleInstance::~CSingleInstance() {
  if (service_ != nullptr) {
    g_socket_service_stop(service_);
    g_object_unref(service_);
  }
  if (lockFd_ >= 0) close(lockFd_);  // releases the lock
}

bool CSingleInstance::Take(const std::wstring& folder) {
  const std::filesystem::path base = platform::ToPath(folder);
  std::error_code ignored;
  std::filesystem::create_directories(base, ignored);
  socketName_ = RaiseSocketName(base);
  lockFd_ = open((base / kLockFileName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lockFd_ < 0) return false;
  if (flock(lockFd_, LOCK_EX | LOCK_NB) == 0) return true;
  if (errno == EWOULDBLOCK) AskToRaise(socketName_);
  close(lockFd_);
  lockFd_ = -1;
  return false;
}

void CSingleInstance::ListenForRaise(std::function<void()> raise) {
  if (lockFd_ < 0) return;
  raise_ = std::move(raise);
  service_ = g_socket_service_new();
  GSocketAddress* address = g_unix_socket_address_new_with_type(socketName_.data(), static_cast<gint>(socketName_.size()),
                                                                G_UNIX_SOCKET_ADDRESS_ABSTRACT);
  g_socket_listener_add_address(G_SOCKET_LISTENER(service_), address, G_SOCKET_TYPE_STREAM,
                                G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr, nullptr);
  g_object_unref(address);
  g_signal_connect(service_, "incoming",
                   G_CALLBACK(+[](GSocketService*, GSocketConnection*, GObject*, gpointer self) -> gboolean {
                     static_cast<CSingleInstance*>(self)->raise_();
                     return FALSE;
                   }),
                   this);
  g_socket_service_start(service_);
}
