// Writes the text form of commands and their values. Numbers are the shortest that read back as the same,
// whatever the locale.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "lists/Command.h"

namespace VELTRO::KELVO::ClientLib {

// Appends to a text, in pieces: what was put is there after Flush.
class CommandTextWriter {
 public:
  // `expectedBytes` of payloads and what is around them will be written, as far as known: the text is given
  // room from how long the first of them come out.
  explicit CommandTextWriter(std::string& text, std::size_t expectedBytes = 0)
      : text_(text), expectedBytes_(expectedBytes) {}
  CommandTextWriter(const CommandTextWriter&) = delete;
  CommandTextWriter& operator=(const CommandTextWriter&) = delete;

  void Put(std::string_view text);
  // A value that has no text, or a payload that breaks off, is put as "Unsupported value".
  void PutCommand(const CommandView& command);
  // Throws std::runtime_error "Illegal array value type!".
  void PutElements(std::uint8_t arrayType, std::span<const unsigned char> elements);
  void Flush();

 private:
  // More than the longest name or value of one element.
  static constexpr std::size_t MostAtOnce = 160;

  void MakeRoom();
  // These need room made before.
  void PutShort(std::string_view text);
  template <class T>
  void PutElement(const unsigned char* bytes);
  template <class T>
  void PutNumber(T number);

  template <class T>
  void PutElementsOf(std::span<const unsigned char> elements);
  // These put the first of the values in `left` and take it from them; false, with nothing put, when it is
  // malformed.
  bool PutValue(std::span<const unsigned char>& left);
  template <class T>
  bool PutValueOf(std::span<const unsigned char>& left);
  bool PutPayload(std::span<const unsigned char> payload);

  // What the commands share that have the code of the one before and a single scalar or point of the same type: the text
  // ahead of the value, and the payload's beginning.
  struct Form {
    static constexpr std::size_t MostText = 32;
    static constexpr std::size_t None = SIZE_MAX;

    std::int32_t Code = 0;
    std::size_t PayloadSize = None;
    std::array<unsigned char, Command::HeaderBytes + 1> Head{};
    std::array<char, MostText> Text{};
    std::size_t TextSize = 0;
    void (CommandTextWriter::*PutValue)(const unsigned char* bytes) = nullptr;
  };
  bool HasForm(const CommandView& command) const;
  // Puts a command of any form.
  void PutAnew(const CommandView& command);
  // Keeps the form of a command whose code has come twice.
  void KeepForm(const CommandView& command);

  std::string& text_;
  std::size_t expectedBytes_;
  std::size_t doneBytes_ = 0;
  std::array<char, 4096> piece_;
  char* at_ = piece_.data();
  Form form_;
};

}  // namespace VELTRO::KELVO::ClientLib
