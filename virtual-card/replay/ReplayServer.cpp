#include "replay/ReplayServer.h"

#include <poll.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "base/Log.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

constexpr int RestMs = 100;  // when descriptors or threads have run out

}  // namespace

ReplayServer::ReplayServer(const ClientLib::IPAddress& address, int port, const RecordedCalls& recording,
                           const ReplaySettings& settings, std::size_t mostConnections)
    : recording_(recording),
      settings_(settings),
      mostConnections_(mostConnections),
      listener_(Listen(address, port)) {}

ReplayServer::~ReplayServer() {
  isStopping_ = true;
  wake_.Signal();
  if (thread_.joinable()) thread_.join();
}

void ReplayServer::Start() {
  thread_ = std::thread([this] { Work(); });
}

void ReplayServer::Work() {
  bool isExhausted = false;
  while (!isStopping_) {
    pollfd entries[] = {{wake_.Get(), POLLIN, 0}, {isExhausted ? -1 : listener_.Get(), POLLIN, 0}};
    poll(entries, 2, isExhausted ? RestMs : -1);
    wake_.Clear();
    std::erase_if(sessions_, [](const auto& session) { return session->IsFinished(); });
    isExhausted = false;
    std::string peer;
    try {
      Descriptor socket = Accept(listener_, peer, isExhausted);
      if (socket.IsOpen()) Take(std::move(socket), peer);
    } catch (const std::exception& error) {
      LogLine({peer, " refused: ", error.what()});
      isExhausted = true;
    }
  }
  sessions_.clear();
}

void ReplayServer::Take(Descriptor socket, const std::string& peer) {
  if (sessions_.size() >= mostConnections_) return LogLine({peer, " refused: all connections are taken"});
  const auto& connections = recording_.GetConnections();
  // Whoever comes when all have gone is a new run of the application.
  const bool isNewRun =
      std::ranges::all_of(sessions_, [](const auto& session) { return session->HasClientLeft(); });
  if (taken_ >= connections.size() && isNewRun && !settings_.IsStrict) taken_ = 0;
  const RecordedConnection* connection = taken_ < connections.size() ? &connections[taken_] : nullptr;
  const std::string count = std::to_string(connections.size());
  ++taken_;
  sessions_.push_back(std::make_unique<ReplaySession>(
      std::move(socket), peer, recording_, connection,
      "The recording has " + count + (connections.size() == 1 ? " connection" : " connections") +
          ", and this is one more.",
      settings_, wake_));
}

}  // namespace VELTRO::KELVO::VirtualCard
