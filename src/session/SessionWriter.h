// Records a session into a file: a line that says so, then a line for each frame (LineMaker.h).
#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "common/Descriptor.h"
#include "common/Mutex.h"
#include "session/FrameSink.h"
#include "session/LineMaker.h"
#include "session/SessionHead.h"

namespace VELTRO::KELVO::ClientLib::Recording {

// Frames are copied, and a thread makes lines of them and writes these. A call waits for it only when it is far behind,
// which a disk can do, and at most a second; then frames are missing, which a line says, and so does Finish. Any thread
// may call anything.
class SessionWriter : public FrameSink {
 public:
  // Creates the file, or empties the one that is there. Throws std::runtime_error "Unable to open recording 'PATH':
  // REASON" or "Unable to write recording 'PATH': REASON".
  SessionWriter(const std::string& path, const SessionHead& head);
  // Finish without its words.
  ~SessionWriter() override;
  SessionWriter(const SessionWriter&) = delete;
  SessionWriter& operator=(const SessionWriter&) = delete;

  // Of large bytes with an owner a share is kept, and no copy.
  void TakeFrame(std::uint32_t connection, FrameWay way, const FramePieces& frame,
                 const std::shared_ptr<const void>& owner = nullptr) noexcept override;
  void TakeOther(std::uint32_t connection, FrameWay way, LineKind kind,
                 std::span<const unsigned char> bytes = {}) noexcept override;
  // Why nothing is written any more; empty: it is.
  std::string GetFailure() const;
  // Writes what is left and closes the file; what comes then is not recorded. Throws std::runtime_error "Unable to
  // write recording 'PATH': REASON" or "N frames are missing in recording 'PATH'."
  void Finish();

 private:
  struct Entry;
  struct Reference {
    std::span<const unsigned char> Bytes;
    std::shared_ptr<const void> Owner;
  };
  // What waits: entries with their bytes, and the bytes by reference of those that have some.
  struct Waiting {
    std::string Entries;
    std::vector<Reference> References;
    std::size_t ReferencedBytes = 0;

    bool IsEmpty() const { return Entries.empty(); }
    std::size_t Size() const { return Entries.size() + ReferencedBytes; }
    void Clear();
  };
  using Clock = std::chrono::steady_clock;

  void Take(LineHead head, bool isFrame, const FramePieces& pieces,
            const std::shared_ptr<const void>& owner) noexcept;
  void AppendEntry(const LineHead& head, bool isFrame, const FramePieces& pieces,
                   const std::shared_ptr<const void>& owner) KELVO_REQUIRES(mutex_);
  void Append(const Entry& entry) KELVO_REQUIRES(mutex_);
  std::chrono::microseconds Now() const;
  // At the end, where no entry comes that could.
  void TellLost() noexcept KELVO_REQUIRES(mutex_);
  void WaitForRoom(MutexLock& lock, std::size_t size) KELVO_REQUIRES(mutex_);
  void Work();
  // Waits for entries and takes them; false when there are none and none will come.
  bool TakeEntries(Waiting& entries);
  void AppendLines(std::string& text, Waiting& waiting);
  // Fails once and for all.
  void WriteAll(std::string_view text) noexcept;
  void Join() noexcept;

  const std::string path_;
  const Clock::time_point start_ = Clock::now();
  Descriptor file_;             // the thread's own, once it runs
  LineMaker lines_;             // the thread's own
  std::string whole_;           // the thread's own: a frame that waited in pieces
  std::atomic<int> reason_{0};  // why nothing can be written any more

  Mutex mutex_;
  CondVar filled_;
  CondVar emptied_;
  Waiting waiting_ KELVO_GUARDED_BY(mutex_);
  bool idle_ KELVO_GUARDED_BY(mutex_) = false;   // the thread sleeps until something comes
  bool stuck_ KELVO_GUARDED_BY(mutex_) = false;  // somebody has waited for it in vain
  bool closing_ KELVO_GUARDED_BY(mutex_) = false;
  std::uint64_t lost_ KELVO_GUARDED_BY(mutex_) = 0;     // frames, since the latest entry
  std::uint64_t missing_ KELVO_GUARDED_BY(mutex_) = 0;  // frames in all

  Mutex joinMutex_;
  std::thread thread_ KELVO_GUARDED_BY(joinMutex_);
};

}  // namespace VELTRO::KELVO::ClientLib::Recording
