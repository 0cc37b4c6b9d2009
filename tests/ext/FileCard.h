// Local files, and cards whose files do not behave.
#pragma once

#include "support/FakeCard.h"
#include "support/TemporaryDirectory.h"

namespace VELTRO::KELVO::Test {

struct Folder : TemporaryDirectory {
  std::string operator/(const std::string& name) const { return Path + "/" + name; }
  // Its files and what is in them; "name=content ".
  std::string Content() const {
    std::string text;
    for (const auto& entry : std::filesystem::directory_iterator(Path))
      text += entry.path().filename().string() + "=" + ContentOf(entry.path()) + " ";
    return text;
  }
  static void Write(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
  }
};

inline std::string Noise(std::size_t size) {
  std::string bytes(size, '\0');
  std::mt19937 random(static_cast<unsigned>(size));
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

// What a card answers.
using Answer = std::function<std::string(const Request&)>;

inline Answer Always(auto value) {
  return [=](const Request& r) { return Response(r.Id, value); };
}
inline Answer Bytes(std::size_t count) {
  return Always(std::vector<unsigned char>(count, 'x'));
}
inline std::string Refused(const Request& r) {
  return ErrorResponse(r.Id, "Refused.");
}
inline std::string Silence(const Request&) {
  return "";
}

// A card with one file that keeps what it is asked and does one thing wrong.
struct FileCard {
  std::string Content, Wrong{};  // the method whose answer is Answer in place of the right one
  Test::Answer Answer{};
  std::atomic<int> Cut = -1;  // the request at which the connection ends
  std::mutex Mutex{};
  std::string Calls{};
  // The methods, without "File", as they came since the last time. Waits, if not for ever, for so many characters.
  std::string TakeCalls(std::size_t count = 0) {
    for (const Stopwatch watch;; std::this_thread::yield()) {
      const std::lock_guard lock(Mutex);
      if (Calls.size() >= count || watch.Milliseconds() > 30000) return std::exchange(Calls, "");
    }
  }
  FakeCard Card{[this](Peer& peer) {
    int number = 0;
    std::size_t position = 0;
    if (!peer.Handshake()) return;
    for (Request r; peer.Next(r);) {
      {
        const std::lock_guard lock(Mutex);
        std::string name = r.Method;
        if (const auto at = name.find("File"); at != std::string::npos) name.erase(at, 4);
        Calls += name + " ";
      }
      if (number++ == Cut) return;
      if (r.Method == Wrong) {
        peer.Send(Answer(r));
      } else if (r.Method == "GetFileHandle") {
        peer.Send(Response(r.Id, -1));
      } else if (r.Method == "FileOpen") {
        peer.Send(Response(r.Id, 5)), position = 0;
      } else if (r.Method == "FileGetSize") {
        peer.Send(Response(r.Id, Content.size()));
      } else if (r.Method == "FileRead") {
        const auto count = std::get<1>(r.Arguments->as<std::tuple<int, std::size_t>>());
        const std::string piece = Content.substr(position, count);
        position += piece.size();
        peer.Send(Response(r.Id, std::vector<unsigned char>(piece.begin(), piece.end())));
      } else if (r.Method.ends_with("Exists")) {
        peer.Send(Response(r.Id, true));
      } else {
        peer.Send(Response(r.Id, msgpack::type::nil_t()));
      }
    }
  }};
};

}  // namespace VELTRO::KELVO::Test
