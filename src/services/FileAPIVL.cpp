#include "services/FileAPIVL.h"

#include <algorithm>
#include <chrono>
#include <span>
#include <stdexcept>

#include "services/FileStream.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

void Report(const TransferProgress& progress, std::uint64_t moved, std::uint64_t whole) {
  if (progress && !progress(moved, whole)) throw std::runtime_error("The transfer was cancelled.");
}

// Whether a card draws a download out: a chunk, in however many answers, has to come within one time-out. Only the time
// in which the card was waited for counts.
class Pace {
 public:
  using Clock = std::chrono::steady_clock;

  void Asking() { asked_ = Clock::now(); }
  void Answered(std::size_t bytes) {
    waited_ += Clock::now() - asked_;
    moved_ += bytes;
    if (moved_ >= FileAPIVL::ChunkBytes) *this = {};
  }
  void Check(std::uint32_t timeout) const {
    if (waited_ > std::chrono::milliseconds(timeout))
      throw std::runtime_error("The card sends the file too slowly.");
  }

 private:
  Clock::time_point asked_;
  Clock::duration waited_{};
  std::size_t moved_ = 0;
};

}  // namespace

FileHandle FileAPIVL::Open(DirectorySelector directory, const std::string& name, FileMode mode) {
  return {caller_,
          caller_.Call<std::int32_t>("FileOpen", directory._to_integral(), name, mode._to_integral())};
}

void FileAPIVL::Put(DirectorySelector directory, const std::string& name, const std::string& path,
                    const TransferProgress& progress) {
  FileStream local(path, FileStream::Direction::Read);
  const auto open = caller_.Call<std::int32_t>("GetFileHandle", directory._to_integral(), name);
  if (open >= 0) FileHandle(caller_, open);
  FileHandle remote = Open(directory, name, FileMode::Create);
  for (std::uint64_t moved = 0;;) {
    const auto chunk = local.Read(static_cast<std::size_t>(chunkSize_));
    if (chunk.empty()) return;
    remote.Write(chunk);
    moved += chunk.size();
    Report(progress, moved, std::max(moved, local.GetSize()));
    if (chunk.size() < static_cast<std::size_t>(chunkSize_)) return;
  }
}

void FileAPIVL::Get(DirectorySelector directory, const std::string& name, const std::string& path,
                    const TransferProgress& progress) {
  FileStream local(path, FileStream::Direction::Write);
  {
    FileHandle remote = Open(directory, name, FileMode::Open);
    const std::uint64_t size = remote.GetSize();
    local.CheckRoom(size);
    Pace pace;
    for (std::uint64_t moved = 0; moved < size;) {
      const auto wanted =
          static_cast<std::int32_t>(std::min(size - moved, static_cast<std::uint64_t>(chunkSize_)));
      pace.Asking();
      const FilePiece piece = remote.ReadPiece(wanted);
      const auto chunk = piece.Get();
      pace.Answered(chunk.size());
      if (chunk.empty()) throw std::runtime_error("The card's file ended early.");
      if (std::ssize(chunk) > wanted) throw std::runtime_error("The card sent more than it was asked for.");
      local.Write(chunk);
      moved += chunk.size();
      Report(progress, moved, size);
      if (moved < size) pace.Check(caller_.GetTimeout());
    }
  }
  local.Commit();
}

}  // namespace VELTRO::KELVO::ClientLib
