#include "ToolRows.h"

#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "TextRows.h"
#include "lists/CommandList.h"

namespace VELTRO::KELVO::Bench {

namespace {

using ClientLib::CommandList;

constexpr std::size_t kToolMarks = 1'000'000;
constexpr const char* kFileReading = "1000000 marks from a file";

// A list of so many marks in a folder that goes with the program.
class Job {
 public:
  Job() : folder_(std::filesystem::temp_directory_path() / ("kelvo-bench-" + std::to_string(getpid()))) {
    std::filesystem::create_directory(folder_);
    CommandList list;
    list.AppendMarkSpeed(0.001);
    for (std::size_t i = 0; i < kToolMarks; ++i) {
      const auto angle = static_cast<double>(i) * 0.001;
      list.AppendMarkAbs(
          ClientLib::Point2D{{std::round(40000 * std::cos(angle)) / 1000, 40 * std::sin(1.7 * angle)}});
    }
    std::ofstream(Path("job.txt")) << list.ToString();
  }
  ~Job() {
    std::error_code none;
    std::filesystem::remove_all(folder_, none);
  }
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;

  std::string Path(const std::string& name) const { return folder_ / name; }

 private:
  const std::filesystem::path folder_;
};

const Job& TheJob() {
  static const Job job;
  return job;
}

double ReadingFile(RowContext&) {
  std::size_t count = 0;
  const double time = FastestMilliseconds([&] {
    std::ifstream file(TheJob().Path("job.txt"), std::ios::binary);
    std::string text(std::filesystem::file_size(TheJob().Path("job.txt")), '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    count = CommandList::FromString(text).GetCommandCount();
  });
  if (count != kToolMarks + 1) throw std::runtime_error("not the same list");
  return time;
}

RunRow Tool(const std::string& verb, const std::string& drawing = {}) {
  return [=](RowContext& context) {
    const std::string picture = drawing.empty() ? "" : TheJob().Path(drawing);
    const std::string command = std::string(KELVO_TOOL) + " --quiet " + verb + " " +
                                TheJob().Path("job.txt") + (picture.empty() ? "" : " -o " + picture) +
                                " >/dev/null";
    const double time = FastestMilliseconds([&] {
      if (std::system(command.c_str()) != 0) throw std::runtime_error("the tool failed");
    });
    if (!picture.empty()) {
      context.Note("drawing", "bytes a mark",
                   static_cast<double>(std::filesystem::file_size(picture)) / kToolMarks);
    }
    return time;
  };
}

}  // namespace

void RegisterToolRows(Harness& harness) {
  harness.AddReference(kFileReading, "ms", ReadingFile);
  harness.AddLibraryRow("kelvo list check of them", kFileReading, AtMost(2.5), Tool("list check"));
  harness.AddLibraryRow("kelvo list preview of them", kFileReading, AtMost(2.5),
                        Tool("list preview", "job.svg"));
}

}  // namespace VELTRO::KELVO::Bench
