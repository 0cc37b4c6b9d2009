// The text form of commands and their values.
#include <charconv>

#include "lists/CommandCodes.h"
#include "lists/CommandValueReader.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr std::string_view CoordinateNames = "XYZM";

// Shortest digits that read back as the same number, whatever the locale.
template <class T>
void AppendNumber(std::string& text, T number) {
  char digits[32];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

template <std::size_t N, class T>
void AppendNumber(std::string& text, const Point<N, T>& point) {
  for (std::size_t i = 0; i < N; ++i) {
    if (i > 0) text += ' ';
    text += CoordinateNames[i];
    text += '=';
    AppendNumber(text, point.Coordinates[i]);
  }
}

template <class T>
void AppendElements(std::string& text, const Command::ArrayValue& array) {
  for (std::size_t i = 0, count = array.GetCount(); i < count; ++i) {
    if constexpr (std::is_arithmetic_v<T>) {
      AppendNumber(text, array.As<T>(i));
      text += ' ';
    } else {
      text += "( ";
      AppendNumber(text, array.As<T>(i));
      text += " ) ";
    }
  }
}

template <class T>
void AppendScalar(std::string& text, Command::CommandValueReader& reader) {
  if constexpr (std::is_same_v<T, bool>) {
    text += reader.AsBool() ? "True" : "False";
  } else {
    AppendNumber(text, reader.As<T>());
  }
}

// Calls `visit` with a null pointer to the C++ type of elements of the type; false when there is none.
bool VisitElementType(std::uint8_t type, auto&& visit) {
  switch (type) {
    case CommandValueType::Bool:
      visit(static_cast<bool*>(nullptr));
      return true;
    case CommandValueType::Byte:
      visit(static_cast<std::uint8_t*>(nullptr));
      return true;
    case CommandValueType::Int16:
      visit(static_cast<std::int16_t*>(nullptr));
      return true;
    case CommandValueType::UInt16:
      visit(static_cast<std::uint16_t*>(nullptr));
      return true;
    case CommandValueType::Int32:
      visit(static_cast<std::int32_t*>(nullptr));
      return true;
    case CommandValueType::UInt32:
      visit(static_cast<std::uint32_t*>(nullptr));
      return true;
    case CommandValueType::Int64:
      visit(static_cast<std::int64_t*>(nullptr));
      return true;
    case CommandValueType::UInt64:
      visit(static_cast<std::uint64_t*>(nullptr));
      return true;
    case CommandValueType::Double:
      visit(static_cast<double*>(nullptr));
      return true;
    case CommandValueType::Point2D:
      visit(static_cast<Point2D*>(nullptr));
      return true;
    case CommandValueType::Point3D:
      visit(static_cast<Point3D*>(nullptr));
      return true;
    case CommandValueType::Point4D:
      visit(static_cast<Point4D*>(nullptr));
      return true;
    case CommandValueType::Point2DInt:
      visit(static_cast<Point2DInt*>(nullptr));
      return true;
    case CommandValueType::Point3DInt:
      visit(static_cast<Point3DInt*>(nullptr));
      return true;
    case CommandValueType::Point4DInt:
      visit(static_cast<Point4DInt*>(nullptr));
      return true;
    default:
      return false;
  }
}

// The element types that the text form writes arrays of.
bool IsShownArray(std::uint8_t type) {
  switch (type) {
    case CommandValueType::ByteArr:
    case CommandValueType::UInt16Arr:
    case CommandValueType::DoubleArr:
    case CommandValueType::Point2DArr:
    case CommandValueType::Point3DArr:
    case CommandValueType::Point2DIntArr:
    case CommandValueType::Point3DIntArr:
      return true;
    default:
      return false;
  }
}

void AppendValue(std::string& text, Command::CommandValueReader& reader) {
  const std::uint8_t type = reader.PeekType();
  const std::string acronym =
      CommandValueTypeAcronym(static_cast<CommandValueTypeAcronym::_enumerated>(type))._to_string();
  text.append(acronym).append("[ ");
  if (!ValueTypeBits::IsArray(type)) {
    VisitElementType(type, [&]<class T>(T*) { AppendScalar<T>(text, reader); });
  } else {
    text += reader.AsArray().ToString();
  }
  text += " ]";
}

void AppendValues(std::string& text, std::span<const unsigned char> payload) {
  Command::CommandValueReader reader(payload);
  while (reader.HasNext()) {
    text += ", ";
    const std::uint8_t type = reader.PeekType();
    const bool shown =
        ValueTypeBits::IsArray(type) ? IsShownArray(type) : VisitElementType(type, [](auto*) {});
    if (shown) {
      AppendValue(text, reader);
    } else {
      reader.SkipNext();
      text += "Unsupported value";
    }
  }
}

}  // namespace

std::string Command::ArrayValue::ToString() const {
  std::string text;
  if (!IsShownArray(type_)) throw std::runtime_error("Illegal array value type!");
  VisitElementType(ValueTypeBits::ElementType(type_), [&]<class T>(T*) {
    if constexpr (!std::is_same_v<T, bool>) AppendElements<T>(text, *this);
  });
  return text;
}

std::string CommandView::ToString() const {
  std::string text = "{ ";
  if (const auto mnemonic = MnemonicOf(Code)) {
    text += *mnemonic;
  } else {
    AppendNumber(text, Code);  // readable, though no reader takes it
  }
  try {
    AppendValues(text, Payload);
  } catch (const std::exception&) {
    text += "Unsupported value";  // a payload from elsewhere that breaks off
  }
  return text + " }";
}

}  // namespace VELTRO::KELVO::ClientLib
