#include "web/WebServer.h"

#include <microhttpd.h>
#include <poll.h>
#include <sys/socket.h>

#include <strings.h>
#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::IPAddress;

namespace {

constexpr std::chrono::milliseconds LookInterval{50};
constexpr unsigned LooksOfAll = 2;                // of so many, one is at all sections
constexpr std::chrono::seconds SignInterval{10};  // of life, on each stream
constexpr int EndRounds = 500;                    // of a millisecond, in which streams take the end
constexpr unsigned IdleSeconds = 30;
constexpr std::size_t ConnectionBytes = 32768;
constexpr int SystemBytes = 1 << 17;  // that the system keeps for one who does not read, twice over
constexpr unsigned TooLarge = 413;
constexpr std::size_t StreamPieceBytes = 8192;

constexpr std::pair<const char*, const char*> Headers[] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
};

Admission MakeAdmission(const WebSettings& settings, const Descriptor& listener) {
  const std::string port = ":" + std::to_string(PortOf(listener));
  std::vector<std::string> hosts = {"127.0.0.1" + port, "localhost" + port, "[::1]" + port,
                                    PlaceOf(listener)};
  for (const std::string& host : settings.Hosts) {
    hosts.push_back(host + port);
    hosts.push_back(host);  // behind a proxy, or with its own port
  }
  return {std::move(hosts), RandomText(16)};
}

std::string HeaderOf(MHD_Connection* connection, const char* name) {
  const char* const value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
  return value != nullptr ? value : "";
}

std::string ArgumentOf(MHD_Connection* connection, const char* name) {
  const char* const value = MHD_lookup_connection_value(connection, MHD_GET_ARGUMENT_KIND, name);
  return value != nullptr ? value : "";
}

MHD_Result CountHosts(void* count, MHD_ValueKind, const char* name, const char*) {
  if (strcasecmp(name, "Host") == 0) ++*static_cast<std::size_t*>(count);
  return MHD_YES;
}

WebRequest ReadHead(MHD_Connection* connection, const char* method, const char* path) {
  WebRequest request{.Method = method,
                     .Path = path,
                     .Host = HeaderOf(connection, "Host"),
                     .Origin = HeaderOf(connection, "Origin"),
                     .FetchSite = HeaderOf(connection, "Sec-Fetch-Site"),
                     .ContentType = HeaderOf(connection, "Content-Type"),
                     .Token = HeaderOf(connection, "X-Kelvo-Token"),
                     .LastEventId = HeaderOf(connection, "Last-Event-ID"),
                     .ListId = ArgumentOf(connection, "id"),
                     .From = ArgumentOf(connection, "from"),
                     .After = ArgumentOf(connection, "after"),
                     .Body = {}};
  MHD_get_connection_values(connection, MHD_HEADER_KIND, CountHosts, &request.HostCount);
  return request;
}

MHD_Result Queue(MHD_Connection* connection, unsigned status, const char* type, MHD_Response* response) {
  if (response == nullptr) return MHD_NO;
  for (const auto& [name, value] : Headers) MHD_add_response_header(response, name, value);
  MHD_add_response_header(response, "Content-Type", type);
  if (status == MHD_HTTP_METHOD_NOT_ALLOWED) MHD_add_response_header(response, "Allow", "GET, HEAD, POST");
  const MHD_Result result = MHD_queue_response(connection, status, response);
  MHD_destroy_response(response);
  return result;
}

MHD_Result Queue(MHD_Connection* connection, WebAnswer answer) {
  return Queue(
      connection, answer.Status, answer.ContentType.c_str(),
      MHD_create_response_from_buffer(answer.Body.size(), answer.Body.data(), MHD_RESPMEM_MUST_COPY));
}

}  // namespace

// One that is open, and how far it has been read.
struct WebServer::Stream {
  WebServer& Owner;
  MHD_Connection* Connection;
  std::uint64_t Place;
  std::string Piece = {};  // of events, and how much of it has gone
  std::size_t Sent = 0;
  bool IsWaiting = false;
};

// One request, from its first byte to the last of its answer.
struct WebServer::Exchange {
  WebRequest Request;
};

// What the library calls, in the server's thread.
struct WebServer::Callbacks {
  static MHD_Result Handle(void* owner, MHD_Connection* connection, const char* path, const char* method,
                           const char*, const char* bytes, std::size_t* size, void** own) {
    try {
      return Take(*static_cast<WebServer*>(owner), connection, path, method, bytes, *size, own);
    } catch (const std::exception&) {  // for want of memory; the connection ends
      return MHD_NO;
    }
  }

  static MHD_Result Take(WebServer& server, MHD_Connection* connection, const char* path, const char* method,
                         const char* bytes, std::size_t& size, void** own) {
    if (*own == nullptr) {
      auto exchange = std::make_unique<Exchange>(Exchange{ReadHead(connection, method, path)});
      const WebRequest& request = exchange->Request;
      auto refusal = server.site_.Refuse(request);
      const std::string length = HeaderOf(connection, "Content-Length");
      const bool isLong =
          length.size() > 4 || (length.size() == 4 && length > std::to_string(Admission::MostBodyBytes));
      if (!refusal && isLong) refusal = WebAnswer{.Status = TooLarge, .Body = "It is too long.\n"};
      *own = exchange.release();
      return refusal ? Queue(connection, std::move(*refusal)) : MHD_YES;
    }
    auto& exchange = *static_cast<Exchange*>(*own);
    std::string& body = exchange.Request.Body;
    if (size > 0) {
      if (body.size() + size > Admission::MostBodyBytes) return MHD_NO;  // it told no length
      body.append(bytes, std::exchange(size, 0));
      return MHD_YES;
    }
    if (exchange.Request.Path == "/events") return Open(server, connection, exchange.Request);
    return Queue(connection, server.site_.Serve(exchange.Request));
  }

  static MHD_Result Open(WebServer& server, MHD_Connection* connection, const WebRequest& request) {
    if (server.streams_.size() >= MostStreams) {
      return Queue(connection, {.Status = MHD_HTTP_SERVICE_UNAVAILABLE, .Body = "Too many look.\n"});
    }
    const std::string& after = request.LastEventId.empty() ? request.After : request.LastEventId;
    auto stream =
        std::make_unique<Stream>(Stream{server, connection, server.site_.GetEvents().PlaceBehind(after)});
    stream->Piece = "retry: 1000\n\n";
    MHD_Response* const response =
        MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, StreamPieceBytes, Read, stream.get(), Close);
    if (response == nullptr) return MHD_NO;
    server.streams_.insert(stream.release());
    server.nextLook_ = {};
    return Queue(connection, MHD_HTTP_OK, "text/event-stream", response);
  }

  static ssize_t Read(void* own, std::uint64_t, char* bytes, std::size_t most) {
    auto& stream = *static_cast<Stream*>(own);
    try {
      if (stream.Sent == stream.Piece.size()) {
        stream.Piece = stream.Owner.site_.GetEvents().Read(stream.Place, StreamPieceBytes);
        stream.Sent = 0;
      }
    } catch (const std::bad_alloc&) {
      return MHD_CONTENT_READER_END_WITH_ERROR;
    }
    if (stream.Piece.empty()) {
      if (stream.Owner.isEnding_) return MHD_CONTENT_READER_END_OF_STREAM;
      MHD_suspend_connection(stream.Connection);
      stream.IsWaiting = true;
      return 0;
    }
    const std::size_t count = std::min(most, stream.Piece.size() - stream.Sent);
    stream.Piece.copy(bytes, count, stream.Sent);
    stream.Sent += count;
    return static_cast<ssize_t>(count);
  }

  static void Close(void* own) {
    const std::unique_ptr<Stream> stream(static_cast<Stream*>(own));
    stream->Owner.streams_.erase(stream.get());
  }

  static void Complete(void*, MHD_Connection*, void** own, MHD_RequestTerminationCode) {
    delete static_cast<Exchange*>(std::exchange(*own, nullptr));
  }

  static void Ignore(void*, const char*, va_list) {}
};

void WebServer::DaemonEnd::operator()(MHD_Daemon* daemon) const {
  MHD_stop_daemon(daemon);
}

WebServer::WebServer(Card& card, const WebSettings& settings)
    : card_(card),
      listener_(Listen(IPAddress::Resolve(settings.Address.c_str()), settings.Port)),
      place_(PlaceOf(listener_)),
      site_(card, MakeAdmission(settings, listener_)) {
  setsockopt(listener_.Get(), SOL_SOCKET, SO_SNDBUF, &SystemBytes,
             sizeof SystemBytes);  // connections inherit it
  daemon_.reset(MHD_start_daemon(
      MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, &Callbacks::Handle, this,
      MHD_OPTION_EXTERNAL_LOGGER, &Callbacks::Ignore, nullptr, MHD_OPTION_LISTEN_SOCKET, listener_.Get(),
      MHD_OPTION_CONNECTION_LIMIT, MostConnections, MHD_OPTION_CONNECTION_MEMORY_LIMIT, ConnectionBytes,
      MHD_OPTION_CONNECTION_TIMEOUT, IdleSeconds, MHD_OPTION_NOTIFY_COMPLETED, &Callbacks::Complete, nullptr,
      MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_END));
  if (!daemon_) throw std::runtime_error("The page cannot be served.");
  listener_.Release();  // the daemon closes it
  thread_ = std::thread([this] { Work(); });
}

WebServer::~WebServer() {
  stopping_ = true;
  wake_.Signal();
  thread_.join();
  card_.Doings.Watch(false);
}

void WebServer::Work() {
  const int events = MHD_get_daemon_info(daemon_.get(), MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
  while (!stopping_) {
    pollfd entries[] = {{events, POLLIN, 0}, {wake_.Get(), POLLIN, 0}};
    poll(entries, 2, WaitTime());
    wake_.Clear();
    MHD_run(daemon_.get());
    card_.Doings.Watch(!streams_.empty());
    if (!streams_.empty() && Steady::now() >= nextLook_) Look();
  }
  End();
}

// Milliseconds. Without anybody who looks nothing is looked at.
int WebServer::WaitTime() const {
  constexpr std::int64_t Longest = 60000;
  std::int64_t time = Longest;
  MHD_UNSIGNED_LONG_LONG wanted = 0;
  if (MHD_get_timeout(daemon_.get(), &wanted) == MHD_YES) {
    time = static_cast<std::int64_t>(std::min<MHD_UNSIGNED_LONG_LONG>(wanted, Longest));
  }
  if (!streams_.empty()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(nextLook_ - Steady::now()).count();
    time = std::clamp<std::int64_t>(left, 0, time);
  }
  return static_cast<int>(time);
}

void WebServer::Look() {
  const auto now = Steady::now();
  nextLook_ = now + LookInterval;
  const std::string before = site_.GetEvents().GetLatestId();
  try {
    site_.Look(looks_++ % LooksOfAll == 0);
    if (now >= nextSign_) {
      nextSign_ = now + SignInterval;
      site_.GetEvents().Add("here", "{}");
    }
  } catch (const std::bad_alloc&) {  // the next look may have more
    return;
  }
  if (site_.GetEvents().GetLatestId() != before) WakeStreams();
}

void WebServer::WakeStreams() {
  for (Stream* const stream : streams_) {
    if (std::exchange(stream->IsWaiting, false)) MHD_resume_connection(stream->Connection);
  }
  MHD_run(daemon_.get());
}

// A stream that is suspended would keep the daemon from ending.
void WebServer::End() {
  isEnding_ = true;
  try {
    site_.Look(true);
    site_.GetEvents().Add("end", "{}");
  } catch (const std::bad_alloc&) {  // they see that it does not answer
  }
  // Counted, so that a thread that is held up on a busy machine still tells them.
  for (int round = 0; round < EndRounds && !streams_.empty(); ++round) {
    WakeStreams();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  daemon_.reset();
}

}  // namespace VELTRO::KELVO::VirtualCard
