// Calls and an upload while the session is recorded, beside the same without.
#include "RecordingRows.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "ListRows.h"
#include "Measure.h"
#include "Wire.h"
#include "client/ClientAPI.h"
#include "lists/ListAPI.h"

namespace VELTRO::KELVO::Bench {

namespace {

using ClientLib::ClientAPI;
using ClientLib::CommandList;
using ClientLib::IPAddress;
using ClientLib::Point2D;
using ClientLib::UncheckedMethod;

constexpr const char* kCalls = "calls from 8 threads, not recorded";
constexpr const char* kUpload = "upload of 1000000 marks, not recorded";
constexpr double kMostCost = 0.15;

// A connection that is recorded, or not, into a file that nobody keeps.
class Recorded {
 public:
  Recorded(RowContext& context, bool isRecorded) : context_(context) {
    Client.Connect(IPAddress::Resolve("127.0.0.1"), context.Port(), 1);
    if (!isRecorded) return;
    if (mkdtemp(directory_.data()) == nullptr) throw std::runtime_error("no directory for the recording");
    Client.EnableRecording(Path());
  }
  ~Recorded() {
    std::remove(Path().c_str());
    rmdir(directory_.c_str());
  }
  // Checks that nothing is missing, and tells how long the rest took to write.
  void Finish() {
    const std::uint64_t begin = NowNs();
    Client.DisableRecording();
    context_.Note("end of the recording", "ms", static_cast<double>(NowNs() - begin) / 1e6);
  }

  ClientAPI Client;

 private:
  std::string Path() const { return directory_ + "/session.jsonl"; }

  RowContext& context_;
  std::string directory_ = "/tmp/kelvo-bench-XXXXXX";
};

double Calls(RowContext& context, bool isRecorded) {
  Recorded recorded(context, isRecorded);
  const double rate = MeasureParallelCalls(context, [&] {
    if (recorded.Client.Call<bool>(UncheckedMethod{"GetIsScanning"}, 0)) {
      throw std::runtime_error("true instead of false");
    }
  });
  recorded.Finish();
  return rate;
}

double Upload(RowContext& context, bool isRecorded) {
  static CommandList list = [] {
    CommandList marks;
    for (int i = 0; i < kUploadMarks; ++i) marks.AppendMarkAbs(Point2D{static_cast<double>(i), 1});
    return marks;
  }();
  Recorded recorded(context, isRecorded);
  ClientLib::ListAPI lists(recorded.Client, recorded.Client.GetListEvents());
  const std::uint64_t begin = NowNs();
  lists.Set(1, list, false, -1);
  const double rate = UploadRate(NowNs() - begin);
  recorded.Finish();
  return rate;
}

}  // namespace

void RegisterRecordingRows(Harness& harness) {
  harness.AddReference(kCalls, "calls/s", [](RowContext& context) { return Calls(context, false); });
  harness.AddLibraryRow("calls from 8 threads, recorded", kCalls, AtLeast(1 - kMostCost),
                        [](RowContext& context) { return Calls(context, true); });
  harness.AddReference(kUpload, "MB/s", [](RowContext& context) { return Upload(context, false); });
  harness.AddLibraryRow("upload of 1000000 marks, recorded", kUpload, AtLeast(1 - kMostCost),
                        [](RowContext& context) { return Upload(context, true); });
}

}  // namespace VELTRO::KELVO::Bench
