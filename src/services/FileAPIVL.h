// The files that the card keeps in its directories.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "rpc/RpcCaller.h"
#include "services/FileEnums.h"
#include "services/FileHandle.h"

namespace VELTRO::KELVO::ClientLib {

// Gets what a transfer has moved so far and what it is going to move, in bytes, after every chunk. False ends the
// transfer. Runs on the thread that transfers, which may make calls in it. What it throws ends the transfer, too.
using TransferProgress = std::function<bool(std::uint64_t moved, std::uint64_t whole)>;

class FileAPIVL {
 public:
  static constexpr std::int32_t ChunkBytes = 8192;

  explicit FileAPIVL(RpcCaller& caller) : caller_(caller), chunkSize_(ChunkBytes) {}

  std::vector<std::string> GetFiles(DirectorySelector directory) {
    return caller_.Call<std::vector<std::string>>("GetFiles", directory._to_integral());
  }
  bool Exists(DirectorySelector directory, const std::string& name) {
    return caller_.Call<bool>("FileExists", directory._to_integral(), name);
  }
  void Delete(DirectorySelector directory, const std::string& name) {
    caller_.Call("FileDelete", directory._to_integral(), name);
  }
  FileHandle Open(DirectorySelector directory, const std::string& name, FileMode mode);

  // Transfers go in chunks of 8192 bytes, each when the one before has been answered. However they end, the card's file is
  // closed.
  // Both throw std::runtime_error "Unable to open the local file!" before anything is sent, "Error in stream" for what
  // happens to the local file later, "The transfer was cancelled."; and what the connection and the card throw.

  // Makes the local file a file of the card; one of that name is replaced. A file that this connection has open under
  // that name is closed first. What has been sent of a transfer that fails stays on the card.
  void Put(DirectorySelector directory, const std::string& name, const std::string& path,
           const TransferProgress& progress = {});
  // Makes the card's file a local file, which is replaced at the end of a transfer that succeeds and else stays as it
  // was (FileStream). Throws also std::runtime_error "The local disk has no room for the file.", before any of it is
  // asked for; "The card's file ended early."; "The card sent more than it was asked for."; "The card sends the file too
  // slowly." when it takes longer than the time-out of one call for a chunk that it gives in several answers.
  void Get(DirectorySelector directory, const std::string& name, const std::string& path,
           const TransferProgress& progress = {});

 private:
  RpcCaller& caller_;
  const std::int32_t chunkSize_;
};

}  // namespace VELTRO::KELVO::ClientLib
