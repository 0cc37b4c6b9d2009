// Building long lists of 2D marks and uploading them: the library beside a bare block of bytes and a bare socket.
#include "ListRows.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "BareBlock.h"
#include "Measure.h"
#include "RawClient.h"
#include "Wire.h"
#include "client/ClientAPI.h"
#include "kelvo/kelvo.h"
#include "kelvo/kelvo.hpp"
#include "lists/ListAPI.h"

namespace VELTRO::KELVO::Bench {

namespace {

using ClientLib::CommandList;
using ClientLib::Point2D;

constexpr const char* kAppending = "appending a mark";
constexpr const char* kExported = "appending a mark, exported, by itself";
constexpr const char* kTwoThreads = "1000000 marks, one thread";
constexpr const char* kOneBareThread = "1000000 bare marks, one thread";
constexpr const char* kTwoBareThreads = "1000000 bare marks each, two threads";
constexpr const char* kMemory = "memory of a mark";
constexpr const char* kUpload = "upload of 1000000 marks";
constexpr int kMarks = kUploadMarks;
constexpr int kManyMarks = 10'000'000;
constexpr double kMostUploadBytes = 4.0 * (1 << 20);
constexpr double kMostPeak = 1.5;

void Require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

double SecondsOf(const std::function<void()>& work) {
  const std::uint64_t begin = NowNs();
  work();
  return static_cast<double>(NowNs() - begin) * 1e-9;
}

// Nanoseconds of one of `count` calls with rising coordinates.
template <class Append>
double NanosecondsEach(int count, Append&& append) {
  return SecondsOf([&] {
           for (int i = 0; i < count; ++i) append(i, -i);
         }) *
         1e9 / count;
}

// A connection and a list of it, as an application has them.
class FlatList {
 public:
  explicit FlatList(std::uint16_t port) : connection_(vlConnect("127.0.0.1", port)) {
    list_ = vlListAllocate(connection_);
    Require(list_ > 0, "no connection");
  }
  ~FlatList() { vlDisconnect(connection_); }
  FlatList(const FlatList&) = delete;
  FlatList& operator=(const FlatList&) = delete;

  double AppendMarks(int count) {
    const double time =
        NanosecondsEach(count, [this](double x, double y) { vlListAppendMarkAbs2D(list_, x, y); });
    Require(vlListCommandCount(list_) == count, "marks are missing");
    return time;
  }

 private:
  std::int32_t connection_;
  std::int64_t list_ = 0;
};

double BareAppending(RowContext&) {
  BareBlock block;
  const double time = NanosecondsEach(kMarks, [&](double x, double y) { block.AppendMark(x, y); });
  Require(block.Count() == kMarks, "marks are missing");
  return time;
}

double ClassAppending(RowContext&) {
  CommandList list;
  const double time = NanosecondsEach(kMarks, [&](double x, double y) { list.AppendMarkAbs(Point2D{x, y}); });
  Require(list.GetCommandCount() == kMarks, "marks are missing");
  return time;
}

double FlatAppending(RowContext& context) {
  return FlatList(context.Port()).AppendMarks(kMarks);
}

double CppAppending(RowContext& context) {
  const kelvo::Card card("127.0.0.1", context.Port());
  const kelvo::List list(card);
  const double time = NanosecondsEach(kMarks, [&](double x, double y) { list.AppendMarkAbs2D(x, y); });
  Require(list.CommandCount() == kMarks, "marks are missing");
  return time;
}

double OneThread(RowContext& context) {
  FlatList list(context.Port());
  return SecondsOf([&] { list.AppendMarks(kMarks); }) * 1e3;
}

double TwoThreads(RowContext& context) {
  FlatList mine(context.Port());
  FlatList others(context.Port());
  return SecondsOf([&] {
           std::thread other([&] { others.AppendMarks(kMarks); });
           mine.AppendMarks(kMarks);
           other.join();
         }) *
         1e3;
}

double OneBareThread(RowContext& context) {
  return SecondsOf([&] { BareAppending(context); }) * 1e3;
}

// For orientation: what the machine's memory makes of two threads that have nothing in common.
double TwoBareThreads(RowContext& context) {
  return SecondsOf([&] {
           std::thread other([&] { BareAppending(context); });
           BareAppending(context);
           other.join();
         }) *
         1e3;
}

// Bytes that the process holds now, and the most that it has held since the last MemoryWatch began.
double StatusBytes(const char* name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kibibytes = 0;
    if (word == name && status >> kibibytes) return kibibytes * 1024;
  }
  throw std::runtime_error("the system does not tell how much memory is used");
}

class MemoryWatch {
 public:
  MemoryWatch() {
    std::ofstream("/proc/self/clear_refs") << 5;
    before_ = StatusBytes("VmRSS:");
  }
  double Grown() const { return StatusBytes("VmRSS:") - before_; }
  double Peak() const { return StatusBytes("VmHWM:") - before_; }

 private:
  double before_ = 0;
};

double BareMemory(RowContext&) {
  const MemoryWatch watch;
  BareBlock block;
  for (int i = 0; i < kManyMarks; ++i) block.AppendMark(i, -i);
  return watch.Grown() / kManyMarks;
}

double ListMemory(RowContext& context) {
  const MemoryWatch watch;
  CommandList list;
  for (int i = 0; i < kManyMarks; ++i) list.AppendMarkAbs(Point2D{static_cast<double>(i), 1});
  const double grown = watch.Grown();
  const double peak = watch.Peak() / grown;
  context.Note("peak while building", "of it", peak);
  Require(peak <= kMostPeak, "the list took too much memory while it was built");
  return grown / kManyMarks;
}

CommandList LongList() {
  CommandList list;
  for (int i = 0; i < kMarks; ++i) list.AppendMarkAbs(Point2D{static_cast<double>(i), 1});
  return list;
}

// The frames of an upload, as the library sends them.
std::vector<std::string> UploadFrames() {
  CommandList list = LongList();
  std::vector<std::string> frames;
  for (std::size_t start = 0; start < list.GetCommandCount();) {
    const std::size_t end = list.FindChunkEnd(start);
    msgpack::sbuffer body;
    msgpack::packer packer(body);
    packer.pack(static_cast<std::uint32_t>(frames.size() + 1));
    packer.pack("SetList");
    CommandList piece;
    for (std::size_t i = start; i < end; ++i) piece.Append(list.At(i));
    packer.pack_array(3).pack(1).pack(piece).pack(start > 0);
    std::string frame(kHeaderSize, '\0');
    WriteHeader(frame.data(), FrameType::Request, body.size());
    frames.push_back(frame.append(body.data(), body.size()));
    start = end;
  }
  return frames;
}

double RawUpload(RowContext& context) {
  static const std::vector<std::string> frames = UploadFrames();
  const RawSocket socket(context.Port());
  FrameReader reader(socket.Fd(), 4096);
  const std::uint64_t begin = NowNs();
  for (const std::string& frame : frames) {
    SendAll(socket.Fd(), frame.data(), frame.size());
    Frame answer{};
    Require(reader.Next(answer) && answer.type == FrameType::Response, "no answer");
  }
  return UploadRate(NowNs() - begin);
}

}  // namespace

double UploadRate(std::uint64_t nanoseconds) {
  return 27e3 * kMarks / static_cast<double>(nanoseconds);
}

double RunLibraryUpload(RowContext& context) {
  static CommandList list = LongList();
  ClientLib::ClientAPI client;
  client.Connect(ClientLib::IPAddress::Resolve("127.0.0.1"), context.Port(), 1);
  ClientLib::ListAPI lists(client, client.GetListEvents());
  const MemoryWatch watch;
  const std::uint64_t begin = NowNs();
  lists.Set(1, list, false, -1);
  const double rate = UploadRate(NowNs() - begin);
  const double peak = watch.Peak();
  context.Note("memory beside the list", "MiB", peak / (1 << 20));
  Require(peak < kMostUploadBytes, "the upload took too much memory");
  return rate;
}

void RegisterListRows(Harness& harness) {
  harness.AddReference(kAppending, "ns", BareAppending);
  harness.AddLibraryRow("appending a mark, class", kAppending, AtMost(2), ClassAppending);
  harness.AddLibraryRow("appending a mark, exported", kAppending, AtMost(3), FlatAppending);
  harness.AddReference(kExported, "ns", FlatAppending);
  harness.AddLibraryRow("appending a mark, kelvo.hpp", kExported, AtMost(1.05), CppAppending);
  harness.AddReference(kTwoThreads, "ms", OneThread, TwoCores);
  harness.AddLibraryRow("1000000 marks each, two threads", kTwoThreads, AtMost(1.3), TwoThreads, TwoCores);
  harness.AddReference(kOneBareThread, "ms", OneBareThread, TwoCores);
  harness.AddLibraryRow(kTwoBareThreads, kOneBareThread, std::nullopt, TwoBareThreads, TwoCores);
  harness.AddReference(kMemory, "bytes", BareMemory);
  harness.AddLibraryRow("memory of a mark, library", kMemory, AtMost(35.0 / 25), ListMemory);
  harness.AddReference(kUpload, "MB/s", RawUpload);
  harness.AddLibraryRow("upload of 1000000 marks, library", kUpload, AtLeast(0.85), RunLibraryUpload);
}

}  // namespace VELTRO::KELVO::Bench
