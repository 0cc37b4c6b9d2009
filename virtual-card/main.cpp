// kelvo-virtual-card: a controller card in software.
#include <fcntl.h>
#include <sys/resource.h>
#include <systemd/sd-daemon.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>

#include "Options.h"
#include "base/Log.h"
#include "card/Card.h"
#include "card/SerialTerminal.h"
#include "client/CardInfo.h"
#include "console/StandardInput.h"
#include "replay/ReplayServer.h"
#include "server/SearchResponder.h"
#include "server/Server.h"
#include "web/WebServer.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

sigset_t StopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

// Tells the service manager, where one asks for it, what the card does.
void WaitForStop(const sigset_t& signals) {
  int signal = 0;
  sd_notify(0, "READY=1");
  sigwait(&signals, &signal);
  sd_notify(0, "STOPPING=1");
  // A second one ends the program at once, should the first not.
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

// Every connection takes a descriptor, and so does every open file; the usual limit is an old one.
void AllowManyDescriptors(std::size_t connections) {
  constexpr rlim_t Others =
      100;  // for searches, each with sockets on every interface, and what is open for moments
  const rlim_t wanted = connections + CardFiles::MostOpen + Others;
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= wanted) return;
  limit.rlim_cur = std::min(wanted, limit.rlim_max);
  setrlimit(RLIMIT_NOFILE, &limit);
  if (limit.rlim_cur < wanted) {
    LogLine("The system gives the card " + std::to_string(limit.rlim_cur) +
            " descriptors; all its connections "
            "and open files may take " +
            std::to_string(wanted) + ".");
  }
}

// Or a socket might get the number of a standard stream that the program was started without.
void OpenStandardStreams() {
  for (int stream = 0; stream <= 2; ++stream) {
    if (fcntl(stream, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDWR));
  }
}

void Serve(const Options& options, const sigset_t& stopSignals) {
  const auto address = ClientLib::IPAddress::Resolve(options.Address.c_str());
  Server server(address, options.Port,
                {options.Connections, options.Memory, {options.Queue, options.Verbose}});
  Card card({{options.Firmware, options.Serial, static_cast<std::uint32_t>(options.Connections)},
             {{options.Speed, options.StandaloneList},
              {options.SvgFile, options.Beam, options.DrawAllRuns},
              options.HttpPort.has_value()},
             options.StateDirectory,
             options.Memory,
             options.FaultSeed},
            server);
  for (const std::string& fault : options.Faults) card.FaultsOnRequest.Set(fault);
  card.Ports.Connect(options.Wires);
  for (const InputSetting& input : options.Inputs) card.Ports.SetLevels(input.Port, input.Bits);
  std::optional<SerialTerminal> terminal;
  if (!options.SerialPort.empty()) terminal.emplace(options.SerialPort, card.Serial);
  std::optional<SearchResponder> responder;
  if (options.Ssdp) {
    responder.emplace(SearchSettings{options.SsdpInterfaces, options.Serial, address, server.GetPort()});
    if (server.GetPort() != ClientLib::CardInfo::DefaultPort) {
      LogLine("Those who find this card will look for it on port " +
              std::to_string(ClientLib::CardInfo::DefaultPort) + ".");
    }
  }
  std::optional<WebServer> page;
  if (options.HttpPort)
    page.emplace(card, WebSettings{options.HttpAddress, *options.HttpPort, options.HttpHosts});
  server.Start(card);
  SayLine({"Listening on ", server.GetPlace()});
  if (options.SerialPort == SerialTerminal::Pseudo) SayLine({"Serial port 0: ", terminal->GetPath()});
  if (page) SayLine({"Page at ", page->GetUrl()});
  const StandardInput console(card);
  WaitForStop(stopSignals);
  responder.reset();
  card.Execution.Stop();  // first, so that clients are told and no call waits for the end of a run
  page.reset();           // with the end of the run on it
  server.Stop();
}

void Replay(const Options& options, const sigset_t& stopSignals) {
  const auto address = ClientLib::IPAddress::Resolve(options.Address.c_str());
  const RecordedCalls recording(options.ReplayFile);
  for (const std::string& remark : recording.GetRemarks()) LogLine(remark);
  ReplayServer server(address, options.Port, recording,
                      {options.IsStrictReplay, options.ReplaySpeed, options.Verbose}, options.Connections);
  std::optional<SearchResponder> responder;
  if (options.Ssdp) {
    const std::string serial = recording.GetSerialNumber();
    responder.emplace(SearchSettings{options.SsdpInterfaces, serial.empty() ? options.Serial : serial,
                                     address, server.GetPort()});
  }
  server.Start();
  SayLine({"Listening on ", server.GetPlace()});
  WaitForStop(stopSignals);
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
  std::signal(SIGPIPE, SIG_IGN);  // a reader of our output that goes away must not end the card,
  std::signal(SIGXFSZ, SIG_IGN);  // nor a file that reaches the size limit: writing it fails
  AllowManyDescriptors(options->Connections);
  try {
    options->ReplayFile.empty() ? Serve(*options, stopSignals) : Replay(*options, stopSignals);
  } catch (const std::exception& error) {
    LogLine(error.what());
    exitCode = 1;
  }
  FinishLog();
  return exitCode;
}
