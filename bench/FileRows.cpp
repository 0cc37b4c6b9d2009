// A file of 64 MiB to the card and back: the library, from and to a local file, beside a bare socket that makes as many
// round trips of 8192 bytes; without a local file, and with one.
#include "FileRows.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "RawClient.h"
#include "RawServer.h"
#include "Wire.h"
#include "client/ClientAPI.h"
#include "services/FileAPIVL.h"

namespace VELTRO::KELVO::Bench {

namespace {

using ClientLib::DirectorySelector;

constexpr const char* kUpload = "upload of 64 MiB";
constexpr const char* kDownload = "download of 64 MiB";
constexpr const char* kUploadFromFile = "upload of 64 MiB, local file";
constexpr const char* kDownloadToFile = "download of 64 MiB, local file";

void Require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

double MegabytesPerSecond(std::uint64_t nanoseconds) {
  return static_cast<double>(kBenchFileSize) * 1e3 / static_cast<double>(nanoseconds);
}

// A request as the library makes them, of any size.
template <class... Arguments>
std::string RequestFrame(std::string_view method, const Arguments&... arguments) {
  msgpack::sbuffer body;
  msgpack::packer packer(body);
  packer.pack(1).pack(method).pack_array(sizeof...(arguments));
  (packer.pack(arguments), ...);
  std::string frame(kHeaderSize, '\0');
  WriteHeader(frame.data(), FrameType::Request, body.size());
  return frame.append(body.data(), body.size());
}

// As many round trips as a transfer takes chunks.
double RawExchange(std::uint16_t port, const std::string& request, std::size_t leastAnswer) {
  const RawSocket socket(port);
  FrameReader reader(socket.Fd(), std::size_t{64} << 10);
  const std::uint64_t begin = NowNs();
  for (std::size_t moved = 0; moved < kBenchFileSize; moved += kFileChunkSize) {
    SendAll(socket.Fd(), request.data(), request.size());
    Frame answer{};
    Require(reader.Next(answer) && answer.type == FrameType::Response && answer.size >= leastAnswer,
            "no answer");
  }
  return MegabytesPerSecond(NowNs() - begin);
}

double RawUpload(RowContext& context) {
  const std::vector<std::uint8_t> chunk(kFileChunkSize, 'x');
  return RawExchange(context.Port(), RequestFrame("FileWrite", 1, chunk, chunk.size()), 0);
}

double RawDownload(RowContext& context) {
  return RawExchange(context.Port(), RequestFrame("FileRead", 1, kFileChunkSize), kFileChunkSize);
}

// A folder for local files, which goes with the object.
class Folder {
 public:
  Folder() { Require(mkdtemp(path_.data()) != nullptr, "no folder for local files"); }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  std::string File() const { return path_ + "/file"; }

 private:
  std::string path_ = "/tmp/kelvo-bench-XXXXXX";
};

// The same round trips with a local file read or written in between, 8192 bytes at a time.
double RawUploadFromFile(RowContext& context) {
  const Folder folder;
  std::ofstream(folder.File()) << std::string(kBenchFileSize, 'x');
  std::string request =
      RequestFrame("FileWrite", 1, std::vector<std::uint8_t>(kFileChunkSize), kFileChunkSize);
  char* const place = request.data() + request.find(std::string(kFileChunkSize, '\0'));
  const RawSocket socket(context.Port());
  FrameReader reader(socket.Fd(), std::size_t{64} << 10);
  const std::uint64_t begin = NowNs();
  const int file = open(folder.File().c_str(), O_RDONLY | O_CLOEXEC);
  for (std::size_t moved = 0; moved < kBenchFileSize; moved += kFileChunkSize) {
    Require(read(file, place, kFileChunkSize) == kFileChunkSize, "bytes are missing");
    SendAll(socket.Fd(), request.data(), request.size());
    Frame answer{};
    Require(reader.Next(answer) && answer.type == FrameType::Response, "no answer");
  }
  close(file);
  return MegabytesPerSecond(NowNs() - begin);
}

double RawDownloadToFile(RowContext& context) {
  const Folder folder;
  const std::string request = RequestFrame("FileRead", 1, kFileChunkSize), part = folder.File() + ".part";
  const RawSocket socket(context.Port());
  FrameReader reader(socket.Fd(), std::size_t{64} << 10);
  const std::uint64_t begin = NowNs();
  const int file = open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  for (std::size_t moved = 0; moved < kBenchFileSize; moved += kFileChunkSize) {
    SendAll(socket.Fd(), request.data(), request.size());
    Frame answer{};
    Require(reader.Next(answer) && answer.type == FrameType::Response, "no answer");
    // The bytes are the end of the answer.
    Require(answer.size > kFileChunkSize &&
                write(file, answer.body + answer.size - kFileChunkSize, kFileChunkSize) == kFileChunkSize,
            "bytes are missing");
  }
  Require(fsync(file) == 0 && close(file) == 0 && rename(part.c_str(), folder.File().c_str()) == 0,
          "the file is not on the disk");
  return MegabytesPerSecond(NowNs() - begin);
}

template <class Transfer>
double LibraryTransfer(RowContext& context, Transfer&& transfer) {
  ClientLib::ClientAPI client;
  client.Connect(ClientLib::IPAddress::Resolve("127.0.0.1"), context.Port(), 1);
  ClientLib::FileAPIVL files(client);
  const std::uint64_t begin = NowNs();
  transfer(files);
  return MegabytesPerSecond(NowNs() - begin);
}

double LibraryUpload(RowContext& context) {
  const Folder folder;
  std::ofstream(folder.File()) << std::string(kBenchFileSize, 'x');
  return LibraryTransfer(context, [&](ClientLib::FileAPIVL& files) {
    files.Put(DirectorySelector::BINFILES, "file", folder.File());
  });
}

double LibraryDownload(RowContext& context) {
  const Folder folder;
  const double rate = LibraryTransfer(context, [&](ClientLib::FileAPIVL& files) {
    files.Get(DirectorySelector::BINFILES, "file", folder.File());
  });
  Require(std::filesystem::file_size(folder.File()) == kBenchFileSize, "bytes are missing");
  return rate;
}

}  // namespace

void RegisterFileRows(Harness& harness) {
  harness.AddReference(kUpload, "MB/s", RawUpload);
  harness.AddLibraryRow("upload of 64 MiB, library", kUpload, AtLeast(0.85), LibraryUpload);
  harness.AddReference(kUploadFromFile, "MB/s", RawUploadFromFile);
  harness.AddLibraryRow("upload of 64 MiB beside it, library", kUploadFromFile, AtLeast(0.85), LibraryUpload);
  harness.AddReference(kDownload, "MB/s", RawDownload);
  harness.AddLibraryRow("download of 64 MiB, library", kDownload, AtLeast(0.85), LibraryDownload);
  harness.AddReference(kDownloadToFile, "MB/s", RawDownloadToFile);
  harness.AddLibraryRow("download of 64 MiB beside it, library", kDownloadToFile, AtLeast(0.85),
                        LibraryDownload);
}

}  // namespace VELTRO::KELVO::Bench
