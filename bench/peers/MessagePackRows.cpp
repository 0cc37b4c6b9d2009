// MessagePack's packer: the marks of an upload kept as numbers, and packed for the card when they are sent.
#include <algorithm>
#include <cstring>
#include <msgpack.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "ListRows.h"
#include "PeerRows.h"
#include "RawClient.h"
#include "Wire.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Bench {

namespace {

constexpr const char* kUpload = "upload of 1000000 marks, packed";
constexpr std::size_t kPieceBytes = 921600;
constexpr std::size_t kCountedBytes = 25;  // of a mark
constexpr std::size_t kMarksOfPiece = kPieceBytes / kCountedBytes;

struct Mark {
  double x, y;
};

double Upload(RowContext& context) {
  std::vector<Mark> marks;
  for (int i = 0; i < kUploadMarks; ++i) marks.push_back({static_cast<double>(i), 1});
  char payload[21] = {1, 0, 0, 17, 0x6B};
  const RawSocket socket(context.Port());
  FrameReader reader(socket.Fd(), 4096);
  msgpack::sbuffer frame;
  const std::int32_t code = ClientLib::CommandCode::MARK_ABS;
  const std::uint64_t begin = NowNs();
  for (std::size_t start = 0; start < marks.size(); start += kMarksOfPiece) {
    const std::size_t count = std::min(kMarksOfPiece, marks.size() - start);
    frame.clear();
    frame.write("\0\0\0\0\0\0", kHeaderSize);
    msgpack::packer packer(frame);
    packer.pack(1).pack("SetList").pack_array(3).pack(1);
    packer.pack_array(static_cast<std::uint32_t>(count + 1)).pack(-1);
    for (std::size_t i = start; i < start + count; ++i) {
      std::memcpy(payload + 5, &marks[i], sizeof(Mark));
      packer.pack_array(2).pack(code).pack_bin(sizeof payload).pack_bin_body(payload, sizeof payload);
    }
    packer.pack(start > 0);
    WriteHeader(frame.data(), FrameType::Request, frame.size() - kHeaderSize);
    SendAll(socket.Fd(), frame.data(), frame.size());
    Frame answer{};
    if (!reader.Next(answer) || answer.type != FrameType::Response) throw std::runtime_error("no answer");
  }
  return UploadRate(NowNs() - begin);
}

}  // namespace

void RegisterMessagePackRows(Harness& harness) {
  harness.AddReference(kUpload, "MB/s", Upload);
  harness.AddLibraryRow("upload of 1000000 marks, library", kUpload, AtLeast(1), RunLibraryUpload);
}

}  // namespace VELTRO::KELVO::Bench
