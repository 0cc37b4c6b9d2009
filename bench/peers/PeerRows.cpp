#include "PeerRows.h"

#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <thread>

namespace VELTRO::KELVO::Bench {

void ReportPort(std::uint16_t port) {
  if (write(STDOUT_FILENO, &port, sizeof port) != static_cast<ssize_t>(sizeof port)) _exit(1);
  std::thread([] {
    char ignored = 0;
    ssize_t received = 0;
    do {
      received = read(STDIN_FILENO, &ignored, 1);
    } while (received > 0 || (received < 0 && errno == EINTR));
    _exit(0);
  }).detach();
}

int RunPeerServer(std::string_view name) {
#ifdef KELVO_BENCH_ZEROMQ
  if (name == "zeromq") return RunZeroMqServer();
#endif
#ifdef KELVO_BENCH_CAPNPROTO
  if (name == "capnproto") return RunCapnProtoServer();
#endif
  throw std::invalid_argument("no such server: " + std::string(name));
}

void RegisterPeerRows(Harness& harness) {
#ifdef KELVO_BENCH_ZEROMQ
  RegisterZeroMqRows(harness);
#endif
#ifdef KELVO_BENCH_CAPNPROTO
  RegisterCapnProtoRows(harness);
#endif
#ifdef KELVO_BENCH_SIMDJSON
  RegisterSimdJsonRows(harness);
#endif
#ifdef KELVO_BENCH_RAPIDJSON
  RegisterRapidJsonRows(harness);
#endif
  RegisterMessagePackRows(harness);
}

}  // namespace VELTRO::KELVO::Bench
