#include "CapturedSession.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace VELTRO::KELVO::Tool {

using ClientLib::FramePieces;
using ClientLib::FrameWay;
using ClientLib::Recording::FrameSplitter;
using ClientLib::Recording::LineKind;

namespace {

// Bytes that wait for what is ahead of them, one way of one connection: more than any window.
constexpr std::size_t MostEarly = std::size_t{16} << 20;
constexpr std::size_t MostEarlyPieces = 65536;

}  // namespace

// What one side sends. Places in it are counted in 64 bits, of which packets have the lower 32.
struct CapturedSession::Way {
  struct Piece {
    std::vector<unsigned char> Bytes;
    std::uint64_t Cut;
  };

  Way(FrameSink& sink, std::uint32_t connection, FrameWay way)
      : Number(connection), Direction(way), Frames(sink, connection, way) {}

  // The place that is nearest to where the way is.
  std::uint64_t PlaceOf(std::uint32_t sequence) const {
    return Next + static_cast<std::uint64_t>(static_cast<std::int64_t>(
                      static_cast<std::int32_t>(sequence - static_cast<std::uint32_t>(Next))));
  }

  const std::uint32_t Number;
  const FrameWay Direction;
  FrameSplitter Frames;
  bool IsKnown = false;  // where it begins
  bool HasEnded = false;
  bool IsTold = false;             // that it has
  std::uint64_t Next = 0;          // the first byte that has not come
  std::uint64_t Acknowledged = 0;  // the other side has all bytes ahead of this
  std::uint64_t End = 0;           // behind the last byte, when it is known
  std::map<std::uint64_t, Piece> Early;
  std::size_t EarlyBytes = 0;
};

struct CapturedSession::Connection {
  Connection(FrameSink& sink, std::uint32_t number)
      : ToCard(sink, number, FrameWay::ToCard), FromCard(sink, number, FrameWay::FromCard) {}

  Way ToCard, FromCard;
  std::optional<std::uint64_t> Begin;  // the number of its first packet, if the capture has that
};

CapturedSession::CapturedSession(std::uint16_t port, bool hasContent,
                                 std::function<void(std::string_view)> write)
    : port_(port), write_(std::move(write)), lines_(hasContent) {}

CapturedSession::~CapturedSession() = default;

void CapturedSession::Take(const TcpSegment& segment, std::chrono::microseconds time) {
  const bool isFromCard = segment.From.Port == port_;
  if (!isFromCard && segment.To.Port != port_) return;
  now_ = std::max(now_, time);
  const Pair pair = isFromCard ? Pair(segment.To, segment.From) : Pair(segment.From, segment.To);
  Connection* const connection = FindConnection(pair, segment);
  if (connection == nullptr) return;
  Way& way = isFromCard ? connection->FromCard : connection->ToCard;
  Way& other = isFromCard ? connection->ToCard : connection->FromCard;
  if (!way.IsKnown && !segment.IsReset) {
    way.IsKnown = true;
    // So that there is room below for what was overtaken.
    way.Next = (std::uint64_t{1} << 32) + segment.Sequence + (segment.IsSyn ? 1 : 0);
    if (!segment.IsSyn) way.Frames.Lose();  // the capture began later
  }
  if (segment.IsAck && other.IsKnown) {
    other.Acknowledged = std::max(other.Acknowledged, other.PlaceOf(segment.Acknowledged));
  }
  if (way.IsKnown) TakeBytes(way, segment);
  if (segment.IsReset) EndConnection(*connection);
  Write();
}

CapturedSession::Connection* CapturedSession::FindConnection(const Pair& pair, const TcpSegment& segment) {
  const auto found = open_.find(pair);
  Connection* const known = found == open_.end() ? nullptr : found->second.get();
  const bool isFirst = segment.IsSyn && !segment.IsAck;
  const bool isSame = known != nullptr && (!isFirst || known->Begin == std::uint64_t{segment.Sequence});
  if (isSame) return known;
  if (!segment.IsSyn && segment.Bytes.empty() && segment.CutBytes == 0) return nullptr;
  if (known != nullptr) EndConnection(*known);
  auto& connection = open_[pair];
  connection = std::make_unique<Connection>(*this, ++connections_);
  if (isFirst) connection->Begin = segment.Sequence;
  TakeOther(connections_, FrameWay::ToCard, LineKind::Opened, {});
  return connection.get();
}

void CapturedSession::TakeBytes(Way& way, const TcpSegment& segment) {
  const std::uint64_t begin = way.PlaceOf(segment.Sequence + (segment.IsSyn ? 1 : 0));
  const std::uint64_t end = begin + segment.Bytes.size() + segment.CutBytes;
  // A byte that is asked about again keeps the connection alive.
  const bool isAlive = end - begin <= 1 && end == way.Next && !segment.IsSyn && !segment.IsFin;
  if (begin < way.Next && end > begin && !isAlive) ++repeated_;
  if (segment.IsFin) {
    way.HasEnded = true;
    way.End = end;
  }
  if (begin <= way.Next) {
    if (end > way.Next) Deliver(way, begin, segment.Bytes, segment.CutBytes);
    DeliverEarly(way);
  } else if (end > begin) {
    const auto [entry, isNew] = way.Early.try_emplace(
        begin, Way::Piece{{segment.Bytes.begin(), segment.Bytes.end()}, segment.CutBytes});
    if (isNew) {
      way.EarlyBytes += segment.Bytes.size();
    } else {
      ++repeated_;
    }
  }
  // The other side has what the capture lacks; an acknowledgement may have overtaken what it is of, though not by much.
  while (!way.Early.empty() && (way.Acknowledged >= way.Early.begin()->first || way.EarlyBytes > MostEarly ||
                                way.Early.size() > MostEarlyPieces)) {
    Lose(way, way.Early.begin()->first - way.Next);
    DeliverEarly(way);
  }
  if (way.HasEnded && way.Next >= way.End) End(way);
}

void CapturedSession::Deliver(Way& way, std::uint64_t begin, std::span<const unsigned char> bytes,
                              std::uint64_t cut) {
  const std::uint64_t known = std::min<std::uint64_t>(way.Next - begin, bytes.size());
  const std::uint64_t end = begin + bytes.size() + cut;
  bytes = bytes.subspan(static_cast<std::size_t>(known));
  if (!bytes.empty()) way.Frames.Take(bytes);
  way.Next = std::max(way.Next, begin + known + bytes.size());
  if (end > way.Next) Lose(way, end - way.Next);
}

void CapturedSession::DeliverEarly(Way& way) {
  while (!way.Early.empty() && way.Early.begin()->first <= way.Next) {
    const auto next = way.Early.extract(way.Early.begin());
    const auto& [bytes, cut] = next.mapped();
    way.EarlyBytes -= bytes.size();
    if (next.key() + bytes.size() + cut > way.Next) Deliver(way, next.key(), bytes, cut);
  }
}

void CapturedSession::Lose(Way& way, std::uint64_t bytes) {
  way.Frames.Lose();
  lines_.AppendMissingBytes(text_, {now_, way.Number, way.Direction, LineKind::Missing}, bytes);
  way.Next += bytes;
  missingBytes_ += bytes;
  ++gaps_;
}

void CapturedSession::LoseAllEarly(Way& way) {
  while (!way.Early.empty()) {
    Lose(way, way.Early.begin()->first - way.Next);
    DeliverEarly(way);
  }
}

void CapturedSession::End(Way& way) {
  if (!way.IsTold) way.Frames.End();
  way.IsTold = true;
}

void CapturedSession::EndConnection(Connection& connection) {
  for (Way* const way : {&connection.ToCard, &connection.FromCard}) {
    LoseAllEarly(*way);
    End(*way);
  }
}

void CapturedSession::Finish() {
  for (const auto& [pair, connection] : open_) {
    for (Way* const way : {&connection->ToCard, &connection->FromCard}) {
      LoseAllEarly(*way);
      if (way->IsKnown && way->Acknowledged > way->Next + 1) Lose(*way, way->Acknowledged - way->Next);
      if (!way->IsTold) way->Frames.Lose();  // what has begun and not ended is told as bytes
    }
  }
  open_.clear();
  Write();
}

void CapturedSession::TakeFrame(std::uint32_t connection, FrameWay way, const FramePieces& frame,
                                const std::shared_ptr<const void>&) {
  lines_.AppendFrame(text_, {now_, connection, way, {}}, frame[0]);
}

void CapturedSession::TakeOther(std::uint32_t connection, FrameWay way, LineKind kind,
                                std::span<const unsigned char> bytes) {
  lines_.AppendOther(text_, {now_, connection, way, kind},
                     {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void CapturedSession::Write() {
  if (!text_.empty()) write_(text_);
  text_.clear();
}

}  // namespace VELTRO::KELVO::Tool
