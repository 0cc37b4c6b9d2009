// Frames become the lines of a recorded session.
#pragma once

#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "session/FrameLine.h"
#include "session/KnownValues.h"

namespace VELTRO::KELVO::ClientLib::Recording {

// Makes the lines of frames. It knows the requests that have not been answered, so an answer's line can tell its method.
// One thread at a time.
class LineMaker {
 public:
  // Without content the bytes and texts of files are left out.
  explicit LineMaker(bool hasContent) : hasContent_(hasContent) {}

  // Appends the line of a whole frame, line end included; of whatever else it is, as one of raw bytes. The head's kind is
  // not looked at.
  void AppendFrame(std::string& text, const LineHead& head, std::span<const unsigned char> frame);
  // Appends the line of what is no frame, by the head's kind: nothing, bytes, or how many frames are missing.
  void AppendOther(std::string& text, const LineHead& head, std::string_view bytes = {},
                   std::uint64_t missing = 0);
  // Appends the line of so many bytes that came that way and that nobody has.
  void AppendMissingBytes(std::string& text, const LineHead& head, std::uint64_t bytes);

 private:
  using Place = std::uint64_t;  // connection and request id

  void AppendHead(std::string& text, const LineHead& head);
  const std::string& HeadEndOf(const LineHead& head);
  void AppendParsed(std::string& text, const LineHead& head, std::span<const unsigned char> frame);
  void AppendRequest(std::string& text, const LineHead& head, std::span<const char> body);
  void AppendAnswer(std::string& text, const LineHead& head, std::span<const char> body);

  void Ask(Place place, std::string_view method);
  // The method of what was asked there, and forgets it; nothing when nothing was.
  bool TakeAsked(Place place, std::string& method);

  // Nearly all answers come soon, so they are found without a search.
  struct Asked {
    Place Where = 0;
    bool IsOpen = false;
    std::string Method;
  };
  static constexpr std::size_t Slots = 1024;

  // What a head has behind its time: frames of a connection have the same ones again and again.
  struct HeadEnd {
    std::uint32_t Connection = 0;
    std::string Text;
  };

  const bool hasContent_;
  HeadEnd headEnds_[std::size(WayWords)][std::size(KindWords)];  // the latest of each
  KnownValues known_;
  std::vector<Asked> asked_{Slots};
  std::unordered_map<Place, std::string> askedBefore_;  // whose slot another has
  std::string method_;                                  // of the line that is being made
};

}  // namespace VELTRO::KELVO::ClientLib::Recording
