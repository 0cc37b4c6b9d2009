// Cap'n Proto: a call of a method of its own over its two-party connection.
#include <capnp/ez-rpc.h>

#include <stdexcept>
#include <string>

#include "LibraryRows.h"
#include "Measure.h"
#include "PeerRows.h"
#include "RawServer.h"
#include "scanner.capnp.h"

namespace VELTRO::KELVO::Bench {

namespace {

constexpr const char* kCall = "call, Cap'n Proto";

class IdleScanner final : public Scanner::Server {
  kj::Promise<void> getIsScanning(GetIsScanningContext context) override {
    context.getResults().setScanning(false);
    return kj::READY_NOW;
  }
};

double CallLatency(RowContext&) {
  const RawServerProcess server({kPeerServerArgument, "capnproto"});
  capnp::EzRpcClient client("127.0.0.1", server.Port());
  Scanner::Client scanner = client.getMain<Scanner>();
  return MeasureCallLatency([&] {
    auto request = scanner.getIsScanningRequest();
    request.setHead(0);
    if (request.send().wait(client.getWaitScope()).getScanning())
      throw std::runtime_error("true instead of false");
  });
}

}  // namespace

int RunCapnProtoServer() {
  capnp::EzRpcServer server(kj::heap<IdleScanner>(), "127.0.0.1", 0);
  kj::WaitScope& scope = server.getWaitScope();
  ReportPort(static_cast<std::uint16_t>(server.getPort().wait(scope)));
  kj::NEVER_DONE.wait(scope);
}

void RegisterCapnProtoRows(Harness& harness) {
  harness.AddReference(kCall, "us", CallLatency);
  harness.AddLibraryRow("call, library beside Cap'n Proto", kCall, AtMost(1), RunLibraryCallLatency);
}

}  // namespace VELTRO::KELVO::Bench
