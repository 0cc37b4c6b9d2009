// record, session import: sessions of applications that cannot be changed.
#include <kelvo/kelvo.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <optional>

#include "CaptureFile.h"
#include "CapturedSession.h"
#include "CardRelays.h"
#include "Interrupt.h"
#include "Session.h"
#include "Verb.h"
#include "common/ReplacedFile.h"
#include "session/SessionWriter.h"

namespace VELTRO::KELVO::Tool {

namespace {

using ClientLib::IPAddress;

constexpr int LookForEndMs = 100;

std::string OwnName() {
  return "kelvo " KELVO_VERSION;
}

// "PORT", of this machine alone, or "ADDRESS:PORT".
Place ParseListen(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  const std::string port = colon == std::string::npos ? text : text.substr(colon + 1);
  const auto number = static_cast<int>(ParseWhole("--listen", port, 0, 65535));
  if (colon == std::string::npos) return {IPAddress::Resolve("127.0.0.1"), number};
  return {IPAddress::Resolve(ParseCard(text.substr(0, colon) + ":1").Host.c_str()), number};
}

IPAddress AddressOf(const std::string& host) {
  try {
    return IPAddress::Resolve(host.c_str());
  } catch (const std::runtime_error& error) {
    throw Failure(ExitCode::NoConnection, error.what(), "Is --card right?");
  }
}

ExitCode Record(Session& session, const Arguments& given) {
  if (!given.Has("--listen") || !given.Has("-o")) throw WrongUsage("--listen and -o are needed.");
  const Place listen = ParseListen(given.Text("--listen"));
  const CardPlace card = session.Place();
  const Place cardPlace{AddressOf(card.Host), card.Port};
  ClientLib::Descriptor listener = ListenOn(listen);
  std::signal(SIGXFSZ, SIG_IGN);  // a recording that gets too long is told like a full disk
  ClientLib::Recording::SessionWriter writer(given.Text("-o"),
                                             {OwnName(), "", "", !given.Has("--no-content")});
  std::string failure;
  {
    const Interrupt interrupt;
    CardRelays relays(std::move(listener), cardPlace, writer);
    const Json told = {{"address", listen.Address.ToString()}, {"port", relays.GetPort()}};
    if (session.Out.AsJson) {
      session.Out.PrintNow(told);
    } else {
      session.Out.Line("Listening on " + listen.Address.ToString() + ", port " +
                       std::to_string(relays.GetPort()) + ".");
      std::fflush(stdout);
    }
    session.Out.Remark("Recording; Ctrl-C ends.");
    while (!interrupt.Came()) {
      const std::string reason = relays.Serve(LookForEndMs);
      if (!reason.empty()) session.Out.Remark("The card cannot be reached: " + reason + ".");
      // The application goes on all the same.
      if (failure.empty() && !(failure = writer.GetFailure()).empty()) session.Out.Remark(failure);
    }
  }
  writer.Finish();
  return ExitCode::Done;
}

std::string Counted(std::uint64_t count, const std::string& one, const std::string& many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

// What is wrong with the capture.
bool TellFaults(const Session& session, const CapturedSession& captured, std::uint64_t fragments) {
  const bool isWhole = captured.GetMissingBytes() == 0 && fragments == 0;
  if (captured.GetRepeatedSegments() > 0) {
    session.Out.Remark(Counted(captured.GetRepeatedSegments(), "segment", "segments") +
                       " came more than once.");
  }
  if (captured.GetMissingBytes() > 0) {
    session.Out.Remark(Counted(captured.GetMissingBytes(), "byte is", "bytes are") +
                       " missing in the capture, in " + Counted(captured.GetGaps(), "place", "places") + ".");
  }
  if (fragments > 0)
    session.Out.Remark(Counted(fragments, "fragment", "fragments") + " of packets left out.");
  return !isWhole;
}

ExitCode Import(Session& session, const Arguments& given) {
  if (!given.Has("-o")) throw WrongUsage("-o is needed.");
  const auto port =
      static_cast<std::uint16_t>(given.Has("--port") ? given.Whole("--port", 1, 65535) : KELVO_DEFAULT_PORT);
  const bool hasContent = !given.Has("--no-content");
  CaptureFile file(given.Text("FILE"));
  std::optional<ClientLib::ReplacedFile> out;
  out.emplace(given.Text("-o"));
  CapturedSession captured(port, hasContent, [&](std::string_view text) { out->Write(text); });
  std::optional<std::chrono::microseconds> begin;
  std::uint64_t fragments = 0;
  TcpSegment segment;
  while (const auto packet = file.Next()) {
    const PacketKind kind = ReadSegment(file.GetLinkType(), packet->Bytes, packet->WholeSize, segment);
    if (kind == PacketKind::Fragment) ++fragments;
    if (kind != PacketKind::Tcp || (segment.From.Port != port && segment.To.Port != port)) continue;
    if (!begin) {
      begin = packet->Time;
      const timespec started{begin->count() / 1000000, begin->count() % 1000000 * 1000};
      out->Write(ClientLib::Recording::HeadLine({OwnName(), "", "", hasContent}, started));
    }
    captured.Take(segment, packet->Time - *begin);
  }
  captured.Finish();
  if (captured.GetConnections() == 0) {
    throw Refused("The capture has no connection to port " + std::to_string(port) + ".",
                  "--port PORT names another.");
  }
  out->Commit();
  session.Out.Remark(Counted(captured.GetConnections(), "connection", "connections") + ".");
  return TellFaults(session, captured, fragments) ? ExitCode::FaultsFound : ExitCode::Done;
}

}  // namespace

std::span<const Verb> RecordVerbs() {
  static const Verb Rows[] = {
      {"record",
       "Stand between an application and the card, and record what they say to each other",
       {{"--listen", "[ADDRESS:]PORT",
         "Where the application connects to; without ADDRESS from this machine alone"},
        {"-o", "FILE", "The recording"},
        {"--no-content", "", "Leave out what files contain"}},
       &Record},
      {"session import",
       "Make a recording of captured packets",
       {{"FILE", "", "What tcpdump has written, pcap or pcapng"},
        {"-o", "FILE", "The recording"},
        {"--port", "PORT", "The card's port (49374)"},
        {"--no-content", "", "Leave out what files contain"}},
       &Import},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
