#include "RawServer.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

#include "Wire.h"

extern char** environ;

namespace VELTRO::KELVO::Bench {

namespace {

constexpr std::size_t kReceiveCapacity = std::size_t{64} << 10;
constexpr std::size_t kStreamSendSize = std::size_t{256} << 10;
// Long enough for every thread of the client to have gone to sleep again after the answer.
constexpr auto kNotifyDelay = std::chrono::microseconds(300);

[[noreturn]] void ThrowErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// Requests are decoded by hand: every microsecond spent in the server is part of both sides of a ratio and
// would hide a difference between the clients.
class BodyReader {
 public:
  explicit BodyReader(const Frame& frame)
      : at_(reinterpret_cast<const unsigned char*>(frame.body)), end_(at_ + frame.size) {}

  std::uint64_t Integer() {
    const unsigned tag = static_cast<unsigned>(Big(1));
    if (tag < 0x80) return tag;
    if (tag >= 0xcc && tag <= 0xcf) return Big(std::size_t{1} << (tag - 0xcc));
    if (tag >= 0xd0 && tag <= 0xd3) return Big(std::size_t{1} << (tag - 0xd0));
    throw std::runtime_error("integer expected");
  }

  std::string_view String() {
    const unsigned tag = static_cast<unsigned>(Big(1));
    if ((tag & 0xe0U) == 0xa0) return Take(tag & 0x1fU);
    if (tag >= 0xd9 && tag <= 0xdb)
      return Take(static_cast<std::size_t>(Big(std::size_t{1} << (tag - 0xd9))));
    throw std::runtime_error("string expected");
  }

  std::size_t Array() {
    const unsigned tag = static_cast<unsigned>(Big(1));
    if ((tag & 0xf0U) == 0x90) return tag & 0x0fU;
    if (tag == 0xdc || tag == 0xdd) return static_cast<std::size_t>(Big(tag == 0xdc ? 2 : 4));
    throw std::runtime_error("array expected");
  }

 private:
  std::string_view Take(std::size_t count) {
    if (static_cast<std::size_t>(end_ - at_) < count) throw std::runtime_error("request cut short");
    const std::string_view taken(reinterpret_cast<const char*>(at_), count);
    at_ += count;
    return taken;
  }

  std::uint64_t Big(std::size_t count) {
    std::uint64_t value = 0;
    for (const char byte : Take(count)) value = value << 8U | static_cast<unsigned char>(byte);
    return value;
  }

  const unsigned char* at_;
  const unsigned char* end_;
};

template <typename PackBody>
void AppendFrame(msgpack::sbuffer& out, FrameType type, PackBody packBody) {
  const std::size_t start = out.size();
  const char header[kHeaderSize] = {};
  out.write(header, kHeaderSize);
  msgpack::packer<msgpack::sbuffer> packer(out);
  packBody(packer);
  WriteHeader(out.data() + start, type, out.size() - start - kHeaderSize);
}

// Packed once and kept, so that on one core the stream costs the client little more than the kernel's copy.
const msgpack::sbuffer& StreamOf(int count) {
  static std::mutex mutex;
  static std::map<int, msgpack::sbuffer> streams;
  const std::lock_guard lock(mutex);
  const auto [entry, isNew] = streams.try_emplace(count);
  for (int value = 0; isNew && value < count; ++value) {
    AppendFrame(entry->second, FrameType::Notification, [value](auto& packer) {
      packer.pack_array(2);
      packer.pack(kProgressEvent);
      packer.pack(value);
    });
  }
  return entry->second;
}

class Connection {
 public:
  explicit Connection(int fd) : fd_(fd) {}

  void Serve() {
    FrameReader reader(fd_, kReceiveCapacity);
    Frame frame{};
    while (reader.Fill()) {
      while (reader.TryNext(frame)) Answer(frame);
      Flush();
    }
  }

 private:
  void Answer(const Frame& frame) {
    if (frame.type != FrameType::Request) throw std::runtime_error("request expected");
    BodyReader body(frame);
    const std::uint64_t id = body.Integer();
    const std::string_view method = body.String();
    const bool isStream = method == "StreamNotifications";
    const bool isOnce = method == "NotifyOnce";
    if (method.starts_with("File") || method == "GetFileHandle") return AnswerFile(id, method, body);
    const int count = isStream && body.Array() > 0 ? static_cast<int>(body.Integer()) : 0;
    AppendFrame(out_, FrameType::Response, [&](auto& packer) {
      packer.pack(id);
      if (method.starts_with("GetFirmware")) {
        packer.pack("1.0");
      } else if (method.starts_with("GetCardSerial")) {
        packer.pack("123");
      } else if (isStream || isOnce || method == "SetClientLibVersion") {
        packer.pack_nil();
      } else {
        packer.pack_false();
      }
    });
    if (isStream) PushStream(count);
    if (isOnce) PushOne();
  }

  // A file that is kBenchFileSize long, whatever is written to it.
  void AnswerFile(std::uint64_t id, std::string_view method, BodyReader& body) {
    static const std::string bytes(kFileChunkSize, 'x');
    std::size_t count = 0;
    if (method == "FileRead") {
      body.Array();
      body.Integer();
      count = std::min(static_cast<std::size_t>(body.Integer()), bytes.size());
    }
    AppendFrame(out_, FrameType::Response, [&](auto& packer) {
      packer.pack(id);
      if (method == "FileRead") {
        packer.pack_bin(static_cast<std::uint32_t>(count))
            .pack_bin_body(bytes.data(), static_cast<std::uint32_t>(count));
      } else if (method == "FileGetSize") {
        packer.pack(kBenchFileSize);
      } else if (method == "FileWrite" || method == "FileClose") {
        packer.pack_nil();
      } else {
        packer.pack(method == "FileOpen" ? 1 : -1);
      }
    });
  }

  void PushStream(int count) {
    Flush();
    const msgpack::sbuffer& stream = StreamOf(count);
    for (std::size_t sent = 0; sent < stream.size(); sent += kStreamSendSize) {
      SendAll(fd_, stream.data() + sent, std::min(kStreamSendSize, stream.size() - sent));
    }
  }

  // The value repeats the low bits of the stamp, for receivers that hand on the value alone.
  void PushOne() {
    Flush();
    std::this_thread::sleep_for(kNotifyDelay);
    const std::uint64_t now = NowNs();
    AppendFrame(out_, FrameType::Notification, [now](auto& packer) {
      packer.pack_array(3);
      packer.pack(kProgressEvent);
      packer.pack(static_cast<int>(now & kStampMask));
      packer.pack(now);
    });
    Flush();
  }

  void Flush() {
    if (out_.size() == 0) return;
    SendAll(fd_, out_.data(), out_.size());
    out_.clear();
  }

  int fd_;
  msgpack::sbuffer out_;
};

void ServeConnection(int fd) {
  try {
    Connection(fd).Serve();
  } catch (const std::exception& error) {
    // A client that leaves in the middle of a stream is no news.
    const auto* system = dynamic_cast<const std::system_error*>(&error);
    const int code = system != nullptr ? system->code().value() : 0;
    if (code != EPIPE && code != ECONNRESET) dprintf(STDERR_FILENO, "raw server: %s\n", error.what());
  }
  ::close(fd);
}

void AcceptLoop(int listener) {
  for (;;) {
    const int fd = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) {
      // Out of descriptors, most likely: waiting is better than spinning on the core that is measured.
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      continue;
    }
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    std::thread(ServeConnection, fd).detach();
  }
}

}  // namespace

int RunRawServer() {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (listener < 0 || ::bind(listener, generic, length) != 0 || ::listen(listener, 64) != 0 ||
      ::getsockname(listener, generic, &length) != 0) {
    perror("raw server");
    return 1;
  }
  const std::uint16_t port = ntohs(address.sin_port);
  if (::write(STDOUT_FILENO, &port, sizeof(port)) != static_cast<ssize_t>(sizeof(port))) return 1;

  std::thread(AcceptLoop, listener).detach();
  char ignored = 0;
  ssize_t received = 0;
  do {
    received = ::read(STDIN_FILENO, &ignored, 1);
  } while (received > 0 || (received < 0 && errno == EINTR));
  // Connection threads may sit in recv or send; nothing they hold outlives the process.
  ::_exit(0);
}

RawServerProcess::RawServerProcess(const std::vector<std::string>& arguments) {
  int control[2];
  int report[2];
  if (::pipe2(control, O_CLOEXEC) != 0 || ::pipe2(report, O_CLOEXEC) != 0) ThrowErrno("pipe2");
  controlFd_ = control[1];

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, control[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, report[1], STDOUT_FILENO);
  std::string program = "/proc/self/exe";
  std::vector<std::string> words = arguments;
  std::vector<char*> pointers{program.data()};
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  const int failure = ::posix_spawn(&pid_, program.c_str(), &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(control[0]);
  ::close(report[1]);

  const bool isUp =
      failure == 0 && ::read(report[0], &port_, sizeof(port_)) == static_cast<ssize_t>(sizeof(port_));
  ::close(report[0]);
  if (isUp) return;
  ::close(controlFd_);
  if (failure == 0) ::waitpid(pid_, nullptr, 0);
  throw std::runtime_error("the server did not start");
}

RawServerProcess::~RawServerProcess() {
  ::close(controlFd_);
  ::waitpid(pid_, nullptr, 0);
}

}  // namespace VELTRO::KELVO::Bench
