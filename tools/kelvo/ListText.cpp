#include "ListText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <system_error>

#include "Failure.h"
#include "Output.h"
#include "common/ReplacedFile.h"
#include "lists/CommandTextReader.h"

namespace VELTRO::KELVO::Tool {

using ClientLib::CommandTextReader;
using ClientLib::Descriptor;
using ClientLib::TextCursor;

namespace {

constexpr std::size_t PartBytes = std::size_t{1} << 20;
constexpr std::size_t ExcerptBytes = 60;  // on each side of the place

Failure CannotRead(const std::string& path) {
  return Refused("Cannot read '" + path + "': " + std::generic_category().message(errno) + ".");
}

Failure Changed(const std::string& path) {
  return Refused("'" + path + "' has changed meanwhile.");
}

// A file without a name, as what has been read has to be found again.
class KeptText {
 public:
  explicit KeptText(const std::string& path) : path_(path) {
    std::FILE* const kept = std::tmpfile();
    if (kept == nullptr) throw CannotRead(path);
    file_ = Descriptor(dup(fileno(kept)));
    std::fclose(kept);
  }

  void Add(std::string_view bytes) {
    try {
      ClientLib::ReplacedFile::WriteAll(file_.Get(),
                                        {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    } catch (const std::system_error& error) {
      throw Refused("Cannot keep '" + path_ + "': " + error.code().message() + ".");
    }
  }
  Descriptor Take() { return std::move(file_); }

 private:
  const std::string path_;
  Descriptor file_;
};

Descriptor Keep(const std::string& path, int stream) {
  KeptText kept(path);
  std::string bytes(PartBytes, '\0');
  for (;;) {
    const ssize_t count = read(stream, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw CannotRead(path);
    if (count == 0) return kept.Take();
    kept.Add({bytes.data(), static_cast<std::size_t>(count)});
  }
}

Descriptor Keep(const std::string& path, std::string_view text) {
  KeptText kept(path);
  kept.Add(text);
  return kept.Take();
}

Descriptor Open(const std::string& path) {
  if (path == "-") return Keep(path, STDIN_FILENO);
  Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!file.IsOpen() || fstat(file.Get(), &status) != 0)
    throw Refused("Cannot open '" + path + "': " + std::generic_category().message(errno) + ".");
  return S_ISREG(status.st_mode) ? std::move(file) : Keep(path, file.Get());
}

std::size_t CountCharacters(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

bool IsForeign(char c) {
  return (c & 0x80) != 0 || (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\r' && c != '\n');
}

// A character for each, so that the caret is under its place.
std::string Plain(std::string_view text) {
  std::string plain;
  for (const char c : text) {
    if ((c & 0xC0) != 0x80) plain += IsForeign(c) ? '?' : c == '\t' || c == '\r' ? ' ' : c;
  }
  return plain;
}

// Returns how much there was.
std::size_t ReadAt(const std::string& path, int file, char* to, std::size_t most, std::uint64_t offset) {
  for (;;) {
    const ssize_t count = pread(file, to, most, static_cast<off_t>(offset));
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) throw CannotRead(path);
  }
}

// Where in a part of the text that begins at `begin`.
TextPlace PlaceAt(TextPlace begin, std::string_view part, std::size_t at) {
  TextPlace place = std::move(begin);
  const std::string_view before = part.substr(0, at);
  const std::size_t newLine = before.rfind('\n');
  const std::string_view ahead = newLine == std::string_view::npos ? before : before.substr(newLine + 1);
  place.Line += static_cast<std::uint64_t>(std::ranges::count(before, '\n'));
  place.Column = (newLine == std::string_view::npos ? place.Column : 1) + CountCharacters(ahead);
  const std::string_view shown = ahead.substr(ahead.size() - std::min(ahead.size(), ExcerptBytes));
  std::string_view behind = part.substr(at, ExcerptBytes);
  behind = behind.substr(0, behind.find('\n'));
  place.Caret = CountCharacters(shown);
  place.Excerpt = Plain(shown) + Plain(behind);
  return place;
}

}  // namespace

void BlankComments(char* begin, char* end, bool& isInComment) {
  for (char* at = begin; at != end;) {
    void* const next = std::memchr(at, isInComment ? '\n' : '#', static_cast<std::size_t>(end - at));
    char* const found = next == nullptr ? end : static_cast<char*>(next);
    if (isInComment) std::fill(at, found, ' ');
    isInComment = found == end ? isInComment : !isInComment;
    at = found;
  }
}

ListText::ListText(const std::string& path) : path_(path), file_(Open(path)) {}

ListText::ListText(const std::string& name, std::string_view text) : path_(name), file_(Keep(name, text)) {}

bool ListText::ReadMore() {
  const std::size_t size = part_.size();
  // The longer a command is, the more at a time.
  part_.resize(size + std::max(size, PartBytes));
  const std::size_t count = ReadAt(path_, file_.Get(), part_.data() + size, part_.size() - size, end_);
  part_.resize(size + count);
  end_ += count;
  BlankComments(part_.data() + size, part_.data() + part_.size(), isInComment_);
  return count > 0;
}

// Moves the mark over so much of the part.
void ListText::Take(std::size_t count) {
  mark_.Offset += count;
  part_.erase(0, count);
}

// Nearer to the begin than the latest time, it begins anew.
TextPlace ListText::CountUpTo(std::uint64_t offset) {
  if (offset < counted_.Offset) counted_ = Counted();
  std::string bytes(PartBytes, '\0');
  while (counted_.Offset < offset) {
    const std::size_t most =
        static_cast<std::size_t>(std::min<std::uint64_t>(offset - counted_.Offset, PartBytes));
    const std::size_t count = ReadAt(path_, file_.Get(), bytes.data(), most, counted_.Offset);
    if (count == 0) throw Changed(path_);
    const TextPlace place =
        PlaceAt({counted_.Line, counted_.Column, {}, 0}, std::string_view(bytes).substr(0, count), count);
    counted_ = {counted_.Offset + count, place.Line, place.Column};
  }
  return {counted_.Line, counted_.Column, {}, 0};
}

void ListText::AddFault(const char* at, std::string text, std::vector<TextFault>& faults) {
  const auto index = static_cast<std::size_t>(at - part_.data());
  if (!text.ends_with('.')) text += '.';
  if (index < part_.size() && IsForeign(part_[index])) {
    char byte[8];
    std::snprintf(byte, sizeof byte, "0x%02X",
                  static_cast<unsigned>(static_cast<unsigned char>(part_[index])));
    text += std::string(" The byte ") + byte + " has no place there.";
  }
  faults.push_back({PlaceAt(CountUpTo(mark_.Offset), part_, index), std::move(text)});
}

std::vector<TextFault> ListText::Read(ClientLib::CommandList& list, std::size_t mostFaults) {
  std::vector<TextFault> faults;
  CommandTextReader reader(list);
  for (bool hasMore = true; hasMore && faults.size() < mostFaults;) {
    mark_.Command = list.GetCommandCount();
    mark_.IsInComment = part_.empty() && isInComment_;  // else it begins at a command
    marks_.push_back(mark_);
    hasMore = ReadMore();
    isWhole_ = !hasMore;
    const char* const rest = ReadPart(reader, faults, mostFaults);
    Take(static_cast<std::size_t>(rest - part_.data()));
  }
  if (faults.empty()) {
    const bool isEmpty = list.GetCommandCount() == 0 && !isEnclosed_;
    if (isEmpty) AddFault(part_.data(), "There is no command", faults);
    CheckEnd(faults);
  }
  return faults;
}

const char* ListText::ReadPart(CommandTextReader& reader, std::vector<TextFault>& faults,
                               std::size_t mostFaults) {
  TextCursor cursor(part_);
  cursor.SkipBlanks();
  if (isAtBegin_ && !cursor.AtEnd()) {
    isEnclosed_ = cursor.Take('[');
    isAtBegin_ = false;
  }
  while (faults.size() < mostFaults) {
    if (isLost_) cursor.MoveTo(std::find(cursor.At(), cursor.End(), '{'));
    if (cursor.AtEnd()) break;
    isLost_ = false;
    try {
      reader.ReadCommands(cursor);
      // The bracket at the end, which nothing but blanks may follow, is looked at when all has been read.
      const char* const end = cursor.At();
      if (cursor.AtEnd()) return end;
      if (isEnclosed_ && cursor.Take(']')) {
        cursor.SkipBlanks();
        if (cursor.AtEnd()) return end;
      }
      AddFault(cursor.At(), "Unable to parse command", faults);
    } catch (const std::exception& error) {
      if (cursor.AtEnd() && !isWhole_) {
        if (part_.size() < MostCommandBytes) return reader.GetBegin();
        AddFault(reader.GetBegin(), "The command is longer than 64 MiB", faults);
      } else {
        AddFault(cursor.At(), error.what(), faults);
      }
    }
    // On with what begins like a command behind it.
    if (!cursor.AtEnd()) cursor.MoveTo(cursor.At() + 1);
    isLost_ = true;
  }
  return cursor.At();
}

void ListText::CheckEnd(std::vector<TextFault>& faults) {
  if (isEnclosed_ && part_.find(']') == std::string::npos) {
    AddFault(part_.data() + part_.size(), "The list has no end, ]", faults);
  }
}

ClientLib::CommandList ListText::ReadWhole() {
  ClientLib::CommandList list;
  const std::vector<TextFault> faults = Read(list, 1);
  if (!faults.empty()) throw Refused(Shown(path_, faults.front()));
  return list;
}

TextPlace ListText::PlaceOf(std::size_t command) {
  const auto above = std::ranges::upper_bound(marks_, command, {}, &Mark::Command);
  const Mark& mark = *std::prev(above);
  const std::uint64_t end = above == marks_.end() ? end_ : above->Offset;
  std::string part(static_cast<std::size_t>(end - mark.Offset), '\0');
  for (std::size_t done = 0; done < part.size();) {
    const std::size_t count =
        ReadAt(path_, file_.Get(), part.data() + done, part.size() - done, mark.Offset + done);
    if (count == 0) throw Changed(path_);
    done += count;
  }
  bool isInComment = mark.IsInComment;
  BlankComments(part.data(), part.data() + part.size(), isInComment);
  TextCursor cursor(part);
  cursor.SkipBlanks();
  cursor.Take('[');
  cursor.SkipBlanksAndCommas();
  for (std::size_t i = mark.Command; i < command; ++i) {
    if (!TakeCommand(cursor)) throw Changed(path_);
    cursor.SkipBlanksAndCommas();
  }
  return PlaceAt(CountUpTo(mark.Offset), part, static_cast<std::size_t>(cursor.At() - part.data()));
}

std::string Shown(const std::string& path, const TextFault& fault) {
  const TextPlace& place = fault.Place;
  return Clean(path) + ":" + std::to_string(place.Line) + ":" + std::to_string(place.Column) + ": " +
         Clean(fault.Text);
}

}  // namespace VELTRO::KELVO::Tool
