#include "Function.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <sstream>

#include "Handles.h"
#include "Records.h"
#include "kelvo/kelvo.h"

namespace KelvoPython {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t MostSlots = 16;
constexpr auto Slice = std::chrono::milliseconds(50);  // how late a wait may notice a signal
constexpr std::size_t RemoteText = 64u << 20;          // asked for once; what is not written takes no memory
constexpr std::size_t FirstText = 64u << 10;
constexpr std::size_t FirstElements = 32768;
constexpr std::size_t FirstRecords = 4096;
constexpr std::size_t NamesRoom = 16u << 20;
constexpr std::size_t ManyRows = 1000;  // for so many others get the interpreter's lock

std::int64_t HandleOf(py::handle self) {
  if (py::isinstance<CardArea>(self))
    return self.cast<const CardArea&>().Connection.cast<const Card&>().Handle();
  if (py::isinstance<Card>(self)) return self.cast<const Card&>().Handle();
  return self.cast<const Owned&>().Handle();
}

Card& CardOf(py::handle self) {
  if (py::isinstance<CardArea>(self)) return self.cast<const CardArea&>().Connection.cast<Card&>();
  return self.cast<Card&>();
}

// A file transfer's progress, on the thread that transfers.
struct Progress {
  py::handle Function;
  std::optional<py::error_already_set> Failure;

  static bool Forward(void* user, std::uint64_t moved, std::uint64_t whole) {
    auto& progress = *static_cast<Progress*>(user);
    if (!Enter()) return false;
    const PyGILState_STATE state = PyGILState_Ensure();
    bool goOn = false;
    try {
      goOn = progress.Function(moved, whole).ptr() != Py_False && PyErr_CheckSignals() == 0;
      if (PyErr_Occurred() != nullptr) throw py::error_already_set();
    } catch (py::error_already_set& error) {
      progress.Failure.emplace(std::move(error));
      goOn = false;
    }
    PyGILState_Release(state);
    Leave();
    return goOn;
  }
};

// What a call holds until it is over.
struct Frame {
  std::array<Slot, MostSlots> Slots{};
  std::size_t Used = 0;
  std::array<std::uint64_t, MostSlots> Values{};  // numbers that come back, by their slots
  std::vector<py::object> Kept;
  std::vector<ArrayView> Views;
  std::vector<std::vector<std::byte>> Copies;
  std::vector<std::unique_ptr<void, decltype(&std::free)>> Memory;
  std::optional<Progress> Transfer;
  std::size_t LastCount = 0;  // of the latest array

  void Add(std::int64_t integer) { Slots.at(Used++).Integer = integer; }
  void Add(double real) { Slots.at(Used++).Real = real; }
  void Add(const void* pointer) { Slots.at(Used++).Pointer = const_cast<void*>(pointer); }
  void AddValue() { Add(&Values.at(Used)); }
  void* Allocate(std::size_t size) {
    Memory.emplace_back(std::calloc(size, 1), std::free);  // of much, none is touched
    if (Memory.back() == nullptr) throw std::bad_alloc();
    return Memory.back().get();
  }
};

std::int64_t CharOf(const Parameter& parameter, py::handle value, const std::string& name) {
  if (PyUnicode_Check(value.ptr()) == 0) return IntegerOf(value, 0, parameter.Most, name);
  if (PyUnicode_GET_LENGTH(value.ptr()) != 1 || PyUnicode_READ_CHAR(value.ptr(), 0) > parameter.Most) {
    Refuse(PyExc_ValueError, name + " must be a single character up to " + std::to_string(parameter.Most));
  }
  return PyUnicode_READ_CHAR(value.ptr(), 0);
}

std::string Expected(const std::string& name, ArrayKind kind) {
  static const std::map<char, const char*> elements = {
      {'d', "float64"}, {'i', "int32"}, {'I', "uint32"}, {'H', "uint16"}, {'B', "uint8"}};
  const std::string shape = kind.Columns == 0 ? "n" : "n, " + std::to_string(kind.Columns);
  return name + " must be an array of " + elements.at(kind.Letter) +
         (kind.Columns == 0 ? "" : ", (" + shape + ")");
}

void AddArray(Frame& frame, const Parameter& parameter, py::handle value, const std::string& name) {
  frame.Views.emplace_back(value, parameter.Elements.Letter, Expected(name, parameter.Elements));
  const ArrayView& view = frame.Views.back();
  if (view.Columns() != static_cast<std::ptrdiff_t>(parameter.Elements.Columns)) view.RefuseShape();
  if (view.Rows() > std::numeric_limits<std::uint32_t>::max())
    Refuse(PyExc_OverflowError, name + " is too long");
  frame.LastCount = view.Rows();
  frame.Copies.emplace_back();
  frame.Add(view.Elements(frame.Copies.back()));
  frame.Add(static_cast<std::int64_t>(view.Rows()));
}

void AddInput(Frame& frame, const Parameter& parameter, py::handle value, const std::string& name) {
  switch (parameter.What) {
    case ParameterKind::Real:
      return frame.Add(RealOf(value, name));
    case ParameterKind::Integer:
      return frame.Add(IntegerOf(value, parameter.Least, parameter.Most, name));
    case ParameterKind::Bool:
      return frame.Add(static_cast<std::int64_t>(BoolOf(value, name)));
    case ParameterKind::Char:
      return frame.Add(CharOf(parameter, value, name));
    case ParameterKind::Text:
      frame.Kept.push_back(BytesOf(value, name));
      return frame.Add(PyBytes_AS_STRING(frame.Kept.back().ptr()));
    case ParameterKind::Path: {
      PyObject* path = nullptr;
      if (PyUnicode_FSConverter(value.ptr(), &path) == 0) throw py::error_already_set();
      frame.Kept.push_back(py::reinterpret_steal<py::object>(path));
      return frame.Add(PyBytes_AS_STRING(path));
    }
    case ParameterKind::List:
      if (!py::isinstance<List>(value))
        Refuse(PyExc_TypeError, name + " must be a List, not " + TypeName(value));
      return frame.Add(value.cast<const Owned&>().Handle());
    case ParameterKind::Font:
      if (!py::isinstance<Font>(value))
        Refuse(PyExc_TypeError, name + " must be a Font, not " + TypeName(value));
      return frame.Add(value.cast<const Owned&>().Handle());
    case ParameterKind::Array:
      return AddArray(frame, parameter, value, name);
    case ParameterKind::Record:
    case ParameterKind::ChangedRecord: {
      void* const record = frame.Allocate(parameter.RecordType->Size);
      ToC(*parameter.RecordType, value, record, name);
      return frame.Add(record);
    }
    case ParameterKind::Progress:
      if (value.is_none()) {
        frame.Add(nullptr);
        return frame.Add(nullptr);
      }
      if (PyCallable_Check(value.ptr()) == 0) Refuse(PyExc_TypeError, name + " must be callable");
      frame.Transfer.emplace(Progress{value, std::nullopt});
      frame.Add(reinterpret_cast<const void*>(&Progress::Forward));
      return frame.Add(&*frame.Transfer);
    default:
      return frame.Add(std::int64_t{0});  // a wait's time is written when it begins
  }
}

// How many elements, or bytes of text, there is room for at first.
std::size_t FirstRoom(const Parameter& parameter, bool remote) {
  switch (parameter.What) {
    case ParameterKind::OutText:
      return remote ? RemoteText : FirstText;
    case ParameterKind::OutFixedText:
      return 256;
    case ParameterKind::OutNames:
      return NamesRoom;
    case ParameterKind::OutWordsOfNames:
      return NamesRoom / 4;
    case ParameterKind::OutRecords:
      return FirstRecords;
    default:
      return FirstElements;
  }
}

void AddOutput(Frame& frame, const Parameter& parameter, std::size_t room) {
  switch (parameter.What) {
    case ParameterKind::OutRecord:
      return frame.Add(frame.Allocate(parameter.RecordType->Size));
    case ParameterKind::OutMirror:
      return frame.Add(frame.Allocate(std::max<std::size_t>(frame.LastCount, 1)));
    case ParameterKind::OutText:
    case ParameterKind::OutFixedText:
    case ParameterKind::OutNames:
    case ParameterKind::OutWordsOfNames:
    case ParameterKind::OutArray:
    case ParameterKind::OutRecords: {
      const std::size_t size = parameter.What == ParameterKind::OutRecords ? parameter.RecordType->Size
                               : parameter.What == ParameterKind::OutArray ? parameter.Elements.ElementSize()
                               : parameter.What == ParameterKind::OutWordsOfNames ? 4
                                                                                  : 1;
      frame.Add(frame.Allocate(room * size));
      frame.Add(static_cast<std::int64_t>(room));
      if (parameter.What != ParameterKind::OutFixedText) frame.AddValue();
      if (parameter.What == ParameterKind::OutNames) frame.AddValue();
      return;
    }
    default:
      return frame.AddValue();
  }
}

std::int64_t NumberAt(std::size_t size, bool isSigned, const void* memory) {
  const auto read = [memory](auto value) {
    std::memcpy(&value, memory, sizeof value);
    return static_cast<std::int64_t>(value);
  };
  switch (size) {
    case 8:
      return read(std::int64_t{});
    case 2:
      return read(std::uint16_t{});
    default:
      return isSigned ? read(std::int32_t{}) : read(std::uint32_t{});
  }
}

py::list NamesFrom(const char* text, std::size_t count) {
  py::list names;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t length = std::strlen(text);
    names.append(TextFrom(text, length));
    text += length + 1;
  }
  return names;
}

py::object ArrayFrom(const Parameter& parameter, const char* elements, std::size_t count) {
  if (parameter.Elements.Letter == 'B') return py::bytes(elements, count);
  const bool isSigned = parameter.Elements.Letter == 'i';
  const std::size_t size = parameter.Elements.ElementSize();
  py::list list;
  for (std::size_t i = 0; i < count; ++i) list.append(NumberAt(size, isSigned, elements + i * size));
  return list;
}

py::object Output(const Frame& frame, const Parameter& parameter, std::size_t& slot) {
  const std::size_t at = slot;
  const char* const memory = static_cast<const char*>(frame.Slots[at].Pointer);
  switch (parameter.What) {
    case ParameterKind::OutReal: {
      double real = 0;
      std::memcpy(&real, memory, sizeof real);
      slot += 1;
      return py::float_(real);
    }
    case ParameterKind::OutBool:
      slot += 1;
      return py::bool_(*memory != 0);
    case ParameterKind::OutInteger: {
      slot += 1;
      const std::int64_t read = NumberAt(parameter.Size, parameter.Least < 0, memory);
      const py::int_ number =
          parameter.Least < 0 ? py::int_(read) : py::int_(static_cast<std::uint64_t>(read));
      return parameter.Enum.empty() ? py::object(number) : EnumValue(parameter.Enum.c_str(), number);
    }
    case ParameterKind::OutRecord:
      slot += 1;
      return FromC(*parameter.RecordType, memory);
    case ParameterKind::OutMirror:
      slot += 1;
      return py::bytes(memory, frame.LastCount);
    case ParameterKind::OutFixedText:
      slot += 2;
      return TextFrom(memory, strnlen(memory, static_cast<std::size_t>(frame.Slots[at + 1].Integer)));
    case ParameterKind::OutNames:
      slot += 4;
      return NamesFrom(memory, frame.Values[at + 3]);
    case ParameterKind::OutWordsOfNames:
      slot += 3;
      return NamesFrom(memory, frame.Values[at + 2]);
    case ParameterKind::OutText:
      slot += 3;
      return TextFrom(memory, frame.Values[at + 2]);
    case ParameterKind::OutArray:
      slot += 3;
      return ArrayFrom(parameter, memory, frame.Values[at + 2]);
    default:
      break;
  }
  slot += 3;
  py::list records;
  for (std::size_t i = 0; i < frame.Values[at + 2]; ++i) {
    records.append(FromC(*parameter.RecordType, memory + i * parameter.RecordType->Size));
  }
  return records;
}

// The result of a call. Its last error goes into `error`, as another call may be on this thread before it is read.
std::int64_t CallUnlocked(const Way& way, const Frame& frame, std::string& error) {
  std::optional<Unlocked> unlocked;
  if (way.From->Unlocked) unlocked.emplace();
  const std::int64_t result = way.From->Function(frame.Slots.data());
  if (result < 0) error = LastError();
  return result;
}

// A wait in slices, so that Ctrl-C ends it. Threads that get no signals wait at one go.
std::int64_t CallWaiting(const Way& way, Frame& frame, std::size_t slot, py::handle timeout, Card& card,
                         std::string& error) {
  using Seconds = std::chrono::duration<double>;
  double seconds = timeout.is_none() ? -1 : RealOf(timeout, "timeout");
  if (std::isnan(seconds)) Refuse(PyExc_ValueError, "timeout must be a number");
  if (seconds < 0) {
    std::uint32_t milliseconds = 0;
    if (vlGetTimeout(card.Handle(), &milliseconds) != 0) throw Error(LastError());
    seconds = milliseconds / 1e3;
  }
  const auto end =
      Clock::now() + std::chrono::duration_cast<Clock::duration>(Seconds(std::min(seconds, 1e9)));
  const bool sliced = OnMainThread();
  const std::uint32_t interruptions = card.Interruptions;
  while (true) {
    const auto begin = Clock::now();
    auto slice = std::chrono::ceil<std::chrono::milliseconds>(std::max(end - begin, Clock::duration(0)));
    slice = std::min<std::chrono::milliseconds>(slice, sliced ? Slice : std::chrono::milliseconds(1 << 30));
    frame.Slots[slot].Integer = slice.count();
    const std::int64_t result = CallUnlocked(way, frame, error);
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    if (result != 1 || Clock::now() >= end || card.Interruptions != interruptions) return result;
  }
}

}  // namespace

void Function::Add(const Row& row) {
  static const std::map<std::string, ParameterKind> kinds = {
      {"f64", ParameterKind::Real},
      {"bool", ParameterKind::Bool},
      {"text", ParameterKind::Text},
      {"path", ParameterKind::Path},
      {"list", ParameterKind::List},
      {"font", ParameterKind::Font},
      {"record", ParameterKind::Record},
      {"changed_record", ParameterKind::ChangedRecord},
      {"progress", ParameterKind::Progress},
      {"wait", ParameterKind::Wait},
      {"out_f64", ParameterKind::OutReal},
      {"out_bool", ParameterKind::OutBool},
      {"out_text", ParameterKind::OutText},
      {"out_fixed_text", ParameterKind::OutFixedText},
      {"out_names", ParameterKind::OutNames},
      {"out_words_of_names", ParameterKind::OutWordsOfNames},
      {"out_records", ParameterKind::OutRecords},
      {"out_mirror", ParameterKind::OutMirror},
      {"out_record", ParameterKind::OutRecord}};
  struct Integer {
    std::int64_t Least;
    std::uint64_t Most;
    std::size_t Size;
    ParameterKind What = ParameterKind::Integer;
  };
  static const std::map<std::string, Integer> integers = {
      {"i32", {INT32_MIN, INT32_MAX, 4}},
      {"u32", {0, UINT32_MAX, 4}},
      {"u16", {0, UINT16_MAX, 2}},
      {"u64", {0, UINT64_MAX, 8}},
      {"char8", {0, 255, 1, ParameterKind::Char}},
      {"char16", {0, UINT16_MAX, 2, ParameterKind::Char}}};

  Way way;
  way.From = &row;
  std::istringstream words(row.Parameters);
  for (std::string word; words >> word;) {
    if (word.starts_with("->")) {
      way.Result = word.substr(2);
      continue;
    }
    const auto cut = [&word](char mark) {  // what is behind a mark, which goes with it
      const std::size_t at = word.find(mark);
      std::string rest = at == std::string::npos ? "" : word.substr(at + 1);
      word.resize(std::min(at, word.size()));
      return rest;
    };
    const std::string defaultValue = cut('=');
    const std::string type = cut('@');
    std::string kind = cut(':');
    Parameter parameter;
    parameter.Name = word;
    parameter.Label = name_ + "(): " + word;
    const bool out = kind.starts_with("out_");
    const auto integer = integers.find(out ? kind.substr(4) : kind);
    if (integer != integers.end()) {
      parameter.What = out ? ParameterKind::OutInteger : integer->second.What;
      parameter.Least = integer->second.Least;
      parameter.Most = integer->second.Most;
      parameter.Size = integer->second.Size;
      parameter.Enum = type;
    } else if (const std::size_t at = kind.find("array_"); at != std::string::npos) {
      parameter.What = out ? ParameterKind::OutArray : ParameterKind::Array;
      parameter.Elements = ArrayKindNamed(kind.substr(at + 6));
    } else {
      parameter.What = kinds.at(kind);
      if (!type.empty()) parameter.RecordType = &RecordNamed(type);
    }
    if (defaultValue == "None") {
      parameter.Default = py::none();
    } else if (!defaultValue.empty()) {
      const int number = std::stoi(defaultValue);
      parameter.Default =
          parameter.What == ParameterKind::Bool ? py::object(py::bool_(number != 0)) : py::int_(number);
    }
    way.Parameters.push_back(std::move(parameter));
  }
  ways_.push_back(std::move(way));
}

bool Function::Bind(const Way& way, const py::args& arguments, std::size_t first, const py::kwargs& keywords,
                    Bound& bound) const {
  bound.clear();
  const std::size_t given = arguments.size();
  std::size_t next = first, named = 0;
  for (const Parameter& parameter : way.Parameters) {
    if (parameter.IsOut()) continue;
    PyObject* value = nullptr;
    if (next < given) {
      value = PyTuple_GET_ITEM(arguments.ptr(), static_cast<Py_ssize_t>(next++));
      if (keywords.contains(parameter.Name)) return false;
    } else if (keywords.size() > 0) {
      value = PyDict_GetItemString(keywords.ptr(), parameter.Name.c_str());
      named += value != nullptr ? 1 : 0;
    }
    if (value == nullptr) value = parameter.Default.ptr();
    if (value == nullptr) return false;
    bound.emplace_back(value);
  }
  return next == given && named == keywords.size();
}

py::object Function::operator()(const py::args& arguments, const py::kwargs& keywords) const {
  const bool isMethod = *ways_.front().From->Owner != '\0';
  const py::handle self = isMethod ? py::handle(PyTuple_GET_ITEM(arguments.ptr(), 0)) : py::handle();
  Bound bound;
  const Way* fits = nullptr;
  Bound fitting;
  for (const Way& way : ways_) {
    if (!Bind(way, arguments, isMethod ? 1 : 0, keywords, bound)) continue;
    // Of those that differ in the columns of an array alone, the last that has the array's, else the first.
    bool better = fits == nullptr;
    for (std::size_t i = 0; i < bound.size() && !better; ++i) {
      const Parameter& parameter = way.Parameters[i];
      if (parameter.What == ParameterKind::Array && parameter.Elements.Columns > 0) {
        const ArrayView view(bound[i], parameter.Elements.Letter,
                             Expected(parameter.Label, {parameter.Elements.Letter, 0}));
        better = view.Columns() == static_cast<std::ptrdiff_t>(parameter.Elements.Columns);
      }
    }
    if (!better) continue;
    fits = &way;
    std::swap(fitting, bound);
  }
  if (fits != nullptr) return Call(*fits, self, fitting);
  if (ways_.front().From->TakesRows) {
    if (arguments.size() == 2 && keywords.empty() &&
        PyFloat_Check(PyTuple_GET_ITEM(arguments.ptr(), 1)) == 0) {
      return CallRows(HandleOf(self), PyTuple_GET_ITEM(arguments.ptr(), 1));
    }
    if (arguments.size() == 1 && keywords.size() == 1 && keywords.contains("rows")) {
      return CallRows(HandleOf(self), keywords["rows"]);
    }
  }
  Refuse(PyExc_TypeError, "the arguments fit none of\n" + help_.substr(0, help_.find("\n\n")));
}

py::object Function::CallRows(std::int64_t handle, py::handle rows) const {
  std::string expected = name_ + "(): rows must be an array of float64, ";
  for (const Way& way : ways_) {
    expected += (&way == &ways_.front() ? "(n, " : " or (n, ") + std::to_string(way.Parameters.size()) + ")";
  }
  const ArrayView view(rows, 'd', expected);
  const auto way = std::find_if(ways_.begin(), ways_.end(), [&](const Way& candidate) {
    return static_cast<std::ptrdiff_t>(candidate.Parameters.size()) == view.Columns();
  });
  if (way == ways_.end()) view.RefuseShape();

  std::array<Slot, MostSlots> slots{};
  slots[0].Integer = handle;
  const Entry function = way->From->Function;
  const std::size_t columns = way->Parameters.size();
  const std::ptrdiff_t step = view.Step();
  std::size_t row = 0;
  std::string error;
  {
    std::optional<Unlocked> unlocked;
    if (view.Rows() > ManyRows) unlocked.emplace();
    for (; row < view.Rows() && error.empty(); ++row) {
      const char* element = view.Row(row);
      for (std::size_t column = 0; column < columns; ++column, element += step) {
        std::memcpy(&slots[column + 1].Real, element, sizeof(double));
      }
      if (function(slots.data()) != 0) error = LastError();
    }
  }
  if (!error.empty()) throw Error("row " + std::to_string(row - 1) + ": " + error);
  return py::none();
}

py::object Function::Call(const Way& way, py::handle self, const Bound& bound) const {
  const auto hasRoom = [](const Parameter& parameter) {
    return parameter.What == ParameterKind::OutText || parameter.What == ParameterKind::OutArray ||
           parameter.What == ParameterKind::OutRecords;
  };
  for (std::size_t room = 0;;) {
    Frame frame;
    if (self) frame.Add(HandleOf(self));
    std::array<std::size_t, MostSlots> begins{};
    std::size_t next = 0, waits = 0, countSlot = 0;
    py::handle timeout;
    for (std::size_t i = 0; i < way.Parameters.size(); ++i) {
      const Parameter& parameter = way.Parameters[i];
      begins.at(i) = frame.Used;
      if (parameter.IsOut()) {
        if (room == 0) room = FirstRoom(parameter, way.From->Unlocked);
        AddOutput(frame, parameter, hasRoom(parameter) ? room : FirstRoom(parameter, way.From->Unlocked));
        if (hasRoom(parameter)) countSlot = frame.Used - 1;
        continue;
      }
      if (parameter.What == ParameterKind::Wait) {
        waits = frame.Used;
        timeout = bound[next];
      }
      AddInput(frame, parameter, bound[next++], parameter.Label);
    }
    if (std::strncmp(way.From->Name, "interrupt_", 10) == 0) ++CardOf(self).Interruptions;

    std::string error;
    const std::int64_t result = waits != 0 ? CallWaiting(way, frame, waits, timeout, CardOf(self), error)
                                           : CallUnlocked(way, frame, error);
    if (frame.Transfer && frame.Transfer->Failure) throw std::move(*frame.Transfer->Failure);
    if (result < 0) {
      // What is local is asked for again with more room, anything else when it is known how much it must be.
      if (countSlot != 0 && error.starts_with("Buffer is too small")) {
        const std::size_t needed = frame.Values[countSlot] + 16;
        const bool isLocal = !way.From->Unlocked && room < (1u << 30);
        if (isLocal || needed > room + 16) {
          room = isLocal ? 4 * room : needed;
          continue;
        }
      }
      throw Error(error);
    }

    std::vector<py::object> outputs;
    for (std::size_t i = 0; i < way.Parameters.size(); ++i) {
      const Parameter& parameter = way.Parameters[i];
      std::size_t slot = begins.at(i);
      if (parameter.IsOut()) {
        const bool nothing = waits != 0 && result == 1 && parameter.What != ParameterKind::OutArray;
        outputs.push_back(nothing ? py::object(py::none()) : Output(frame, parameter, slot));
      } else if (parameter.What == ParameterKind::ChangedRecord) {
        Refresh(*parameter.RecordType, frame.Slots[slot].Pointer, bound[0]);
      }
    }
    if (way.Result == "int") return py::int_(result);
    if (!way.Result.empty()) {
      const py::object card = py::isinstance<Font>(self) || py::isinstance<List>(self)
                                  ? self.cast<const Owned&>().Connection()
                                  : self.cast<const CardArea&>().Connection;
      return way.Result == "list" ? py::cast(std::make_unique<List>(card, result))
                                  : py::cast(std::make_unique<Font>(card, result));
    }
    if (outputs.empty()) return py::none();
    if (outputs.size() == 1) return outputs[0];
    py::tuple several(outputs.size());
    for (std::size_t i = 0; i < outputs.size(); ++i) several[i] = outputs[i];
    return several;
  }
}

}  // namespace KelvoPython
