// kelvo-virtual-card: a controller card in software.
#include <fcntl.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "Log.h"
#include "Options.h"
#include "card/Card.h"
#include "client/CardInfo.h"
#include "console/StandardInput.h"
#include "server/SearchResponder.h"
#include "server/Server.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

sigset_t StopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

void WaitForStop(const sigset_t& signals) {
  int signal = 0;
  sigwait(&signals, &signal);
  // A second one ends the program at once, should the first not.
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

// Every connection takes a descriptor, and the usual limit is an old one.
void AllowManyDescriptors() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

// Or a socket might get the number of a standard stream that the program was started without.
void OpenStandardStreams() {
  for (int stream = 0; stream <= 2; ++stream) {
    if (fcntl(stream, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDWR));
  }
}

void Serve(const Options& options, const sigset_t& stopSignals) {
  const auto address = ClientLib::IPAddress::Resolve(options.Address.c_str());
  Server server(address, options.Port, {options.Queue, options.Verbose});
  Card card({{options.Firmware, options.Serial},
             {options.Speed, {options.SvgFile, options.Beam, options.DrawAllRuns}, options.StandaloneList},
             options.StateDirectory},
            server);
  for (const InputSetting& input : options.Inputs) card.Inputs.Set(input.Port, input.Bits);
  std::optional<SearchResponder> responder;
  if (options.Ssdp) {
    responder.emplace(SearchSettings{options.SsdpInterfaces, options.Serial, address, server.GetPort()});
    if (server.GetPort() != ClientLib::CardInfo::DefaultPort) {
      LogLine("Those who find this card will look for it on port " +
              std::to_string(ClientLib::CardInfo::DefaultPort) + ".");
    }
  }
  server.Start(card);
  std::printf("Listening on %s\n", server.GetPlace().c_str());
  std::fflush(stdout);
  const StandardInput console(card);
  WaitForStop(stopSignals);
  responder.reset();
  card.Execution.Stop();  // first, so that clients are told and no call waits for the end of a run
  server.Stop();
}

}  // namespace

}  // namespace VELTRO::KELVO::VirtualCard

int main(int count, char** arguments) {
  using namespace VELTRO::KELVO::VirtualCard;
  OpenStandardStreams();
  int exitCode = 0;
  const auto options = ParseOptions(count, arguments, exitCode);
  if (!options) return exitCode;
  // Before there is any thread, so that all of them leave these signals to the main one.
  const sigset_t stopSignals = StopSignals();
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
  std::signal(SIGPIPE, SIG_IGN);  // a reader of our output that goes away must not end the card
  AllowManyDescriptors();
  try {
    Serve(*options, stopSignals);
    return 0;
  } catch (const std::exception& error) {
    LogLine(error.what());
    return 1;
  }
}
