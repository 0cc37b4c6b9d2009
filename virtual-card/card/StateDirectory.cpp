#include "card/StateDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "card/FileFailure.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

StateDirectory::StateDirectory(const std::string& directory)
    : host_(directory.empty() ? HostDirectory() : HostDirectory(directory)) {}

std::optional<std::string> StateDirectory::Read(const std::string& name, std::size_t mostBytes) {
  if (!host_.IsThere()) {
    const MutexLock lock(mutex_);
    const auto found = memory_.find(name);
    return found == memory_.end() ? std::nullopt : std::optional(found->second);
  }
  const Descriptor file = host_.Open(name, O_RDONLY);
  if (file.IsOpen()) return ReadFromHost(name, file, mostBytes);
  if (errno == ENOENT) return std::nullopt;
  ThrowCannot("read", name);
}

std::string StateDirectory::ReadFromHost(const std::string& name, const Descriptor& file,
                                         std::size_t mostBytes) {
  struct stat status {};
  if (fstat(file.Get(), &status) != 0) ThrowCannot("read", name);
  errno = EFBIG;
  if (static_cast<std::size_t>(status.st_size) > mostBytes) ThrowCannot("read", name);
  std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t size = 0;
  while (size < bytes.size()) {
    const ssize_t got = read(file.Get(), bytes.data() + size, bytes.size() - size);
    if (got < 0 && errno != EINTR) ThrowCannot("read", name);
    if (got == 0) break;
    if (got > 0) size += static_cast<std::size_t>(got);
  }
  bytes.resize(size);
  return bytes;
}

void StateDirectory::Write(const std::string& name, std::string_view bytes) {
  if (host_.IsThere()) return host_.Replace(name, bytes);
  const MutexLock lock(mutex_);
  memory_.insert_or_assign(name, std::string(bytes));
}

void StateDirectory::TryToWrite() {
  const std::string name = "SelfTest";
  const MutexLock lock(mutex_);
  host_.Replace(name, name);
  host_.Remove(name);
}

}  // namespace VELTRO::KELVO::VirtualCard
