#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

#include "FileRows.h"
#include "Harness.h"
#include "LibraryRows.h"
#include "ListRows.h"
#include "RawServer.h"
#include "RecordingRows.h"
#include "ReferenceRows.h"
#include "TextRows.h"
#include "ToolRows.h"
#include "peers/PeerRows.h"

namespace {

using namespace VELTRO::KELVO::Bench;

constexpr unsigned kTimeLimitSeconds = 175;
constexpr std::string_view kUsage =
    "kelvo-bench [--quick] [--filter NAME] [--cores 1|2|both] [--self-check] [--peers]\n"
    "  --quick       fewer rounds\n"
    "  --filter      only rows whose name contains NAME, with the reference rows they need\n"
    "  --cores       everything on one core, on two cores, or one after the other (both, the default)\n"
    "  --self-check  compare each reference row with itself\n"
    "  --peers       compare with what a user would take instead, as far as it is installed\n";

Options ParseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    const auto value = [&]() -> std::string_view {
      if (i + 1 >= argc) throw std::invalid_argument(std::string(argument) + " needs a value");
      return argv[++i];
    };
    if (argument == "--quick") {
      options.isQuick = true;
    } else if (argument == "--self-check") {
      options.isSelfCheck = true;
    } else if (argument == "--peers") {
      options.isPeers = true;
    } else if (argument == "--filter") {
      options.filter = value();
    } else if (argument == "--cores") {
      const std::string_view cores = value();
      if (cores != "1" && cores != "2" && cores != "both")
        throw std::invalid_argument("--cores takes 1, 2 or both");
      options.isOneCore = cores != "2";
      options.isTwoCores = cores != "1";
    } else {
      throw std::invalid_argument("unknown argument " + std::string(argument));
    }
  }
  return options;
}

// A call that never returns must not hang whoever waits for the table.
void LimitTime() {
  std::signal(SIGALRM, [](int) {
    constexpr std::string_view message = "kelvo-bench: a row hangs, giving up\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, message.data(), message.size());
    ::_exit(3);
  });
  ::alarm(kTimeLimitSeconds);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == kRawServerArgument) return RunRawServer();
  if (argc == 3 && std::string_view(argv[1]) == kPeerServerArgument) return RunPeerServer(argv[2]);
  if (argc == 2 && std::string_view(argv[1]) == "--help") {
    std::printf("%s", kUsage.data());
    return 0;
  }
  try {
    const Options options = ParseOptions(argc, argv);
    LimitTime();
    Harness harness;
    if (options.isPeers) {
      RegisterPeerRows(harness);
    } else {
      RegisterReferenceRows(harness);
      RegisterLibraryRows(harness);
      RegisterListRows(harness);
      RegisterTextRows(harness);
      RegisterFileRows(harness);
      RegisterToolRows(harness);
      RegisterRecordingRows(harness);
    }
    if (options.isSelfCheck) harness.AddSelfCheckRows();
    return harness.Run(options) ? 0 : 1;
  } catch (const std::invalid_argument& error) {
    std::fprintf(stderr, "%s\n%s", error.what(), kUsage.data());
    return 2;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kelvo-bench: %s\n", error.what());
    return 2;
  }
}
