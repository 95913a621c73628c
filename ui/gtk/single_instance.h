#pragma once
// One launcher per installation on Linux: an exclusive lock on a file in the
// runtime folder, which is per installation, and a socket named after that
// folder on which a second launcher asks the first to come forward.

#include <gio/gio.h>

#include <functional>
#include <string>

class CSingleInstance {
 public:
  CSingleInstance() = default;
  ~CSingleInstance();
  CSingleInstance(const CSingleInstance&) = delete;
  CSingleInstance& operator=(const CSingleInstance&) = delete;

  // True when this process now holds the lock of `folder`. False when it
  // could not be taken; when another launcher holds it, that one has been
  // asked to come forward.
  bool Take(const std::wstring& folder);

  // Calls `raise` on the GTK main loop whenever a later launcher asks.
  void ListenForRaise(std::function<void()> raise);

 private:
  int lockFd_ = -1;
  std::string socketName_;
  GSocketService* service_ = nullptr;
  std::function<void()> raise_;
};
