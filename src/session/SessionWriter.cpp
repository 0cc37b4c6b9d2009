#include "session/SessionWriter.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "common/NoPipeSignal.h"

namespace VELTRO::KELVO::ClientLib::Recording {

namespace {

constexpr std::size_t MostWaiting = std::size_t{64} << 20;  // bytes that are not written yet
constexpr std::size_t ManyWaiting = MostWaiting / 2;        // that are not left to gather any longer
constexpr std::size_t LeastShared = 65536;                  // fewer bytes are copied
constexpr std::chrono::milliseconds Gathering{50};          // so a wake-up serves many frames
constexpr std::chrono::seconds LongestWait{1};
constexpr int LongestPipeWait = 1000;  // milliseconds
constexpr std::size_t TextAtOnce = std::size_t{1} << 20;

std::runtime_error Failure(const char* verb, const std::string& path, int reason) {
  return std::runtime_error(std::string("Unable to ") + verb + " recording '" + path +
                            "': " + std::generic_category().message(reason));
}

}  // namespace

// What waits to be written: this, and so many bytes behind it.
struct SessionWriter::Entry {
  LineHead Head;
  bool IsFrame;
  std::uint64_t Size;             // of Missing: how many frames, and no bytes
  std::uint64_t SharedAt = None;  // in front of which of these bytes those by reference belong

  static constexpr std::uint64_t None = UINT64_MAX;
};

void SessionWriter::Waiting::Clear() {
  Entries.clear();
  References.clear();
  ReferencedBytes = 0;
}

SessionWriter::SessionWriter(const std::string& path, const SessionHead& head)
    : path_(path),
      // Nothing that somebody else has to read may hold up the thread for good.
      file_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666)),
      lines_(head.HasContent) {
  if (!file_.IsOpen()) throw Failure("open", path_, errno);
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  WriteAll(HeadLine(head, now));
  if (reason_ != 0) throw Failure("write", path_, reason_);
  const MutexLock lock(joinMutex_);
  thread_ = std::thread([this] { Work(); });
}

SessionWriter::~SessionWriter() {
  Join();
}

void SessionWriter::TakeFrame(std::uint32_t connection, FrameWay way, const FramePieces& frame,
                              const std::shared_ptr<const void>& owner) noexcept {
  Take({{}, connection, way, LineKind::Request}, true, frame, owner);
}

void SessionWriter::TakeOther(std::uint32_t connection, FrameWay way, LineKind kind,
                              std::span<const unsigned char> bytes) noexcept {
  Take({{}, connection, way, kind}, false, {bytes}, nullptr);
}

void SessionWriter::Take(LineHead head, bool isFrame, const FramePieces& pieces,
                         const std::shared_ptr<const void>& owner) noexcept {
  std::size_t size = 0;
  for (const auto& piece : pieces) size += piece.size();
  MutexLock lock(mutex_);
  if (!waiting_.IsEmpty() && waiting_.Size() + size > MostWaiting) WaitForRoom(lock, size);
  if (closing_ || reason_.load(std::memory_order_relaxed) != 0) return;
  const std::size_t before = waiting_.Size();
  const std::size_t entriesBefore = waiting_.Entries.size();
  head.Time = Now();  // under the lock, so that lines stand in the order of their times
  try {
    if (before > 0 && before + size > MostWaiting) throw std::bad_alloc();
    if (lost_ > 0) Append({{head.Time, head.Connection, head.Way, LineKind::Missing}, false, lost_});
    AppendEntry(head, isFrame, pieces, owner);
    lost_ = 0;
  } catch (const std::exception&) {
    waiting_.Entries.resize(entriesBefore);
    ++lost_;
    ++missing_;
    return;
  }
  if (idle_ || (before < ManyWaiting && waiting_.Size() >= ManyWaiting)) filled_.NotifyOne();
  idle_ = false;
}

void SessionWriter::AppendEntry(const LineHead& head, bool isFrame, const FramePieces& pieces,
                                const std::shared_ptr<const void>& owner) {
  const bool isShared = owner != nullptr && pieces[1].size() >= LeastShared;
  Entry entry{head, isFrame, pieces[0].size() + (isShared ? 0 : pieces[1].size()) + pieces[2].size()};
  if (isShared) entry.SharedAt = pieces[0].size();
  Append(entry);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (isShared && i == 1) continue;
    waiting_.Entries.append(reinterpret_cast<const char*>(pieces[i].data()), pieces[i].size());
  }
  if (!isShared) return;
  waiting_.References.push_back({pieces[1], owner});  // last, so that it is there when all else is
  waiting_.ReferencedBytes += pieces[1].size();
}

void SessionWriter::Append(const Entry& entry) {
  waiting_.Entries.append(reinterpret_cast<const char*>(&entry), sizeof entry);
}

std::chrono::microseconds SessionWriter::Now() const {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start_);
}

void SessionWriter::TellLost() noexcept {
  if (lost_ == 0) return;
  try {
    Append({{Now(), 1, FrameWay::ToCard, LineKind::Missing}, false, std::exchange(lost_, 0)});
  } catch (const std::exception&) {
    reason_ = ENOMEM;
  }
}

void SessionWriter::WaitForRoom(MutexLock& lock, std::size_t size) {
  const auto deadline = Clock::now() + LongestWait;
  while (!stuck_ && !closing_ && !waiting_.IsEmpty() && waiting_.Size() + size > MostWaiting) {
    if (Clock::now() >= deadline) {
      stuck_ = true;
    } else {
      emptied_.WaitUntil(lock, deadline);
    }
  }
}

void SessionWriter::Work() {
  // A file that reaches the size limit is one that cannot be written, and no reason to end the process.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGXFSZ);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  Waiting waiting;
  std::string text;
  try {
    while (TakeEntries(waiting)) {
      AppendLines(text, waiting);
      WriteAll(text);
      text.clear();
      waiting.Clear();
    }
  } catch (const std::exception&) {
    WriteAll(text);
    reason_ = ENOMEM;
  }
  // Some file systems tell only now.
  if (close(file_.Release()) != 0 && reason_ == 0) reason_ = errno;
}

bool SessionWriter::TakeEntries(Waiting& waiting) {
  MutexLock lock(mutex_);
  while (waiting_.IsEmpty() && !closing_) {
    idle_ = true;
    filled_.Wait(lock);
  }
  idle_ = false;
  const auto deadline = Clock::now() + Gathering;
  while (waiting_.Size() < ManyWaiting && !closing_ && Clock::now() < deadline) {
    filled_.WaitUntil(lock, deadline);
  }
  std::swap(waiting, waiting_);
  stuck_ = false;
  emptied_.NotifyAll();
  return !waiting.IsEmpty();
}

void SessionWriter::AppendLines(std::string& text, Waiting& waiting) {
  std::string_view entries = waiting.Entries;
  auto reference = waiting.References.begin();
  while (!entries.empty()) {
    Entry entry;
    std::memcpy(&entry, entries.data(), sizeof entry);
    entries.remove_prefix(sizeof entry);
    const bool hasBytes = entry.Head.Kind != LineKind::Missing;
    std::string_view bytes = entries.substr(0, hasBytes ? entry.Size : 0);
    entries.remove_prefix(bytes.size());
    if (entry.SharedAt != Entry::None) {
      const auto& shared = reference->Bytes;
      whole_.assign(bytes.substr(0, entry.SharedAt));
      whole_.append(reinterpret_cast<const char*>(shared.data()), shared.size());
      whole_.append(bytes.substr(entry.SharedAt));
      bytes = whole_;
      reference++->Owner.reset();
    }
    if (reason_ != 0) continue;
    if (entry.IsFrame) {
      lines_.AppendFrame(text, entry.Head,
                         {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
    } else {
      lines_.AppendOther(text, entry.Head, bytes, entry.Size);
    }
    if (text.size() < TextAtOnce) continue;
    WriteAll(text);
    text.clear();
  }
}

void SessionWriter::WriteAll(std::string_view text) noexcept {
  const NoPipeSignal noSignal;
  while (!text.empty() && reason_ == 0) {
    const ssize_t written = write(file_.Get(), text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
      continue;
    }
    if (errno == EINTR) continue;
    const int reason = errno;
    pollfd entry{file_.Get(), POLLOUT, 0};
    if (reason != EAGAIN || poll(&entry, 1, LongestPipeWait) == 0) reason_ = reason;
  }
}

void SessionWriter::Join() noexcept {
  {
    const MutexLock lock(mutex_);
    closing_ = true;
    TellLost();
    filled_.NotifyAll();
    emptied_.NotifyAll();
  }
  const MutexLock lock(joinMutex_);
  if (thread_.joinable()) thread_.join();
}

std::string SessionWriter::GetFailure() const {
  const int reason = reason_;
  return reason == 0 ? std::string() : Failure("write", path_, reason).what();
}

void SessionWriter::Finish() {
  Join();
  if (const int reason = reason_; reason != 0) throw Failure("write", path_, reason);
  const MutexLock lock(mutex_);
  if (missing_ == 0) return;
  throw std::runtime_error(std::to_string(missing_) + (missing_ == 1 ? " frame is" : " frames are") +
                           " missing in recording '" + path_ + "'.");
}

}  // namespace VELTRO::KELVO::ClientLib::Recording
