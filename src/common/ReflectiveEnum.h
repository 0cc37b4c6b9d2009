// Enumerations that know their names and values.
//
//   KELVO_ENUM(Polarity, std::int32_t, ActiveHigh = 0, ActiveLow = 1)
//
// declares a class `Polarity` with the constants Polarity::ActiveHigh, ..., a name per value, a value per
// name and a checked conversion from an integer. The constants are written as in an `enum`; each one's
// definition text is kept and its name cut out of it at first use. Several constants may share a value; its
// name is then the first's. KELVO_FLAGS declares one whose constants are flags: every combination of their bits is a
// value, too, and one without a name of its own is written as the names of its bits, "X|Z". The tables are never
// destroyed: receive threads read them while the process ends.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Applies `macro` to every argument after it (about 250 of them at the most); a trailing comma is harmless.
#define KELVO_FOR_EACH(macro, ...) __VA_OPT__(KELVO_EXPAND_4(KELVO_FOR_EACH_STEP(macro, __VA_ARGS__)))
#define KELVO_FOR_EACH_STEP(macro, first, ...) \
  macro(first) __VA_OPT__(KELVO_FOR_EACH_AGAIN KELVO_NOTHING_YET()(macro, __VA_ARGS__))
#define KELVO_FOR_EACH_AGAIN() KELVO_FOR_EACH_STEP
#define KELVO_NOTHING_YET() ()
#define KELVO_EXPAND_4(...) KELVO_EXPAND_3(KELVO_EXPAND_3(KELVO_EXPAND_3(KELVO_EXPAND_3(__VA_ARGS__))))
#define KELVO_EXPAND_3(...) KELVO_EXPAND_2(KELVO_EXPAND_2(KELVO_EXPAND_2(KELVO_EXPAND_2(__VA_ARGS__))))
#define KELVO_EXPAND_2(...) KELVO_EXPAND_1(KELVO_EXPAND_1(KELVO_EXPAND_1(KELVO_EXPAND_1(__VA_ARGS__))))
#define KELVO_EXPAND_1(...) KELVO_EXPAND_0(KELVO_EXPAND_0(KELVO_EXPAND_0(KELVO_EXPAND_0(__VA_ARGS__))))
#define KELVO_EXPAND_0(...) __VA_ARGS__

namespace VELTRO::KELVO::ClientLib::Reflection {

// Turns the text `Name = expression` of a constant into its value: the cast binds to the name, the assignment
// is swallowed.
template <class Enum>
struct SwallowAssignment {
  Enum value;
  constexpr explicit SwallowAssignment(Enum constant) : value(constant) {}
  template <class Any>
  constexpr const SwallowAssignment& operator=(Any) const {
    return *this;
  }
};

// The name in a definition text: all before the first blank, "=" or the end.
constexpr std::string_view NameOf(std::string_view definition) {
  return definition.substr(0, definition.find_first_of(" ="));
}

std::vector<std::string_view> CutNames(std::span<const char* const> definitions);

// The names of the bits of `number` in the order of their declaration, "|" between them; empty unless each has one.
template <class Enum>
std::string NamesOfBits(std::int64_t number) {
  std::string text;
  for (std::size_t i = 0; i < Enum::_values().size(); ++i) {
    const std::int64_t bit = Enum::_values()[i]._to_integral();
    if ((number & bit) == 0 || !std::has_single_bit(static_cast<std::uint64_t>(bit))) continue;
    text.append(text.empty() ? "" : "|").append(Enum::_names()[i]);
    number &= ~bit;
  }
  return number == 0 ? text : std::string();
}

[[noreturn]] void ThrowInvalidArgument(const char* enumeration, const char* operation);

}  // namespace VELTRO::KELVO::ClientLib::Reflection

#define KELVO_ENUM_DEFINITION_TEXT(constant) #constant,
#define KELVO_ENUM_VALUE(constant) \
  (::VELTRO::KELVO::ClientLib::Reflection::SwallowAssignment<_enumerated>)constant,

#define KELVO_ENUM(EnumName, Underlying, ...) KELVO_ENUM_OF(false, EnumName, Underlying, __VA_ARGS__)
#define KELVO_FLAGS(EnumName, Underlying, ...) KELVO_ENUM_OF(true, EnumName, Underlying, __VA_ARGS__)

#define KELVO_ENUM_OF(areFlags, EnumName, Underlying, ...)                                                 \
  class EnumName {                                                                                         \
   public:                                                                                                 \
    enum _enumerated : Underlying { __VA_ARGS__ };                                                         \
    using _integral = Underlying;                                                                          \
    constexpr EnumName(_enumerated value) : value_(value) {}                                               \
    constexpr operator _enumerated() const { return value_; }                                              \
    constexpr _integral _to_integral() const { return value_; }                                            \
    static constexpr const char* _name() { return #EnumName; }                                             \
    static std::span<const char* const> _definitions() {                                                   \
      static constexpr const char* definitions[] = {                                                       \
          KELVO_FOR_EACH(KELVO_ENUM_DEFINITION_TEXT, __VA_ARGS__)};                                        \
      return definitions;                                                                                  \
    }                                                                                                      \
    static std::span<const std::string_view> _names() {                                                    \
      static const auto& names = *new std::vector<std::string_view>(                                       \
          ::VELTRO::KELVO::ClientLib::Reflection::CutNames(_definitions()));                               \
      return names;                                                                                        \
    }                                                                                                      \
    static std::span<const EnumName> _values() {                                                           \
      static const auto& values = *[] {                                                                    \
        const ::VELTRO::KELVO::ClientLib::Reflection::SwallowAssignment<_enumerated> all[] = {             \
            KELVO_FOR_EACH(KELVO_ENUM_VALUE, __VA_ARGS__)};                                                \
        auto* const result = new std::vector<EnumName>;                                                    \
        for (const auto& one : all) result->push_back(one.value);                                          \
        return result;                                                                                     \
      }();                                                                                                 \
      return values;                                                                                       \
    }                                                                                                      \
    static constexpr bool _is_valid(std::int64_t number) {                                                 \
      constexpr ::VELTRO::KELVO::ClientLib::Reflection::SwallowAssignment<_enumerated> all[] = {           \
          KELVO_FOR_EACH(KELVO_ENUM_VALUE, __VA_ARGS__)};                                                  \
      std::int64_t bits = 0;                                                                               \
      for (const auto& one : all) {                                                                        \
        if (one.value == number) return true;                                                              \
        bits |= one.value;                                                                                 \
      }                                                                                                    \
      return areFlags && (number & ~bits) == 0;                                                            \
    }                                                                                                      \
    static constexpr EnumName _from_integral(std::int64_t number) {                                        \
      if (!_is_valid(number)) {                                                                            \
        ::VELTRO::KELVO::ClientLib::Reflection::ThrowInvalidArgument(#EnumName, "_from_integral");         \
      }                                                                                                    \
      return static_cast<_enumerated>(number);                                                             \
    }                                                                                                      \
    static std::optional<EnumName> _from_string_nothrow(std::string_view name) {                           \
      const auto names = _names();                                                                         \
      const auto found = std::find(names.begin(), names.end(), name);                                      \
      if (found == names.end()) return std::nullopt;                                                       \
      return _values()[static_cast<std::size_t>(found - names.begin())];                                   \
    }                                                                                                      \
    static EnumName _from_string(std::string_view name) {                                                  \
      const auto value = _from_string_nothrow(name);                                                       \
      if (!value) ::VELTRO::KELVO::ClientLib::Reflection::ThrowInvalidArgument(#EnumName, "_from_string"); \
      return *value;                                                                                       \
    }                                                                                                      \
    /* The name of the value; a number that is none of the declared values is written in decimal. */       \
    std::string _to_string() const {                                                                       \
      const auto values = _values();                                                                       \
      for (std::size_t i = 0; i < values.size(); ++i) {                                                    \
        if (values[i].value_ == value_) return std::string(_names()[i]);                                   \
      }                                                                                                    \
      std::string text;                                                                                    \
      if (areFlags) text = ::VELTRO::KELVO::ClientLib::Reflection::NamesOfBits<EnumName>(value_);          \
      return text.empty() ? std::to_string(_to_integral()) : text;                                         \
    }                                                                                                      \
                                                                                                           \
   private:                                                                                                \
    _enumerated value_;                                                                                    \
  };
