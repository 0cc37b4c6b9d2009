#include "Records.h"

#include <cstring>
#include <limits>
#include <map>
#include <vector>

namespace KelvoPython {
namespace {

// A class of the package; kept for ever.
py::handle ClassNamed(const std::string& name) {
  static auto& classes = *new std::map<std::string, PyObject*>;
  PyObject*& known = classes[name];
  if (known == nullptr)
    known = py::object(py::module_::import("kelvo._types").attr(name.c_str())).release().ptr();
  return known;
}

template <class T>
T Read(const void* memory) {
  T value;
  std::memcpy(&value, memory, sizeof value);
  return value;
}

template <class T>
void WriteInteger(py::handle value, void* memory, const std::string& name) {
  using Limits = std::numeric_limits<T>;
  const auto number =
      static_cast<T>(IntegerOf(value, Limits::min(), static_cast<std::uint64_t>(Limits::max()), name));
  std::memcpy(memory, &number, sizeof number);
}

const char* At(const void* memory, std::size_t offset) {
  return static_cast<const char*>(memory) + offset;
}
char* At(void* memory, std::size_t offset) {
  return static_cast<char*>(memory) + offset;
}

void WriteElements(const Type& type, const py::sequence& values, void* items, const std::string& name) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    const py::object value = values[i];
    ToC(*type.Element, value, At(items, i * type.Element->Size), name + "[" + std::to_string(i) + "]");
  }
}

py::sequence SequenceOf(py::handle value, const std::string& name) {
  if (PySequence_Check(value.ptr()) == 0 || PyUnicode_Check(value.ptr()) || PyBytes_Check(value.ptr())) {
    Refuse(PyExc_TypeError, name + " must be a sequence, not " + TypeName(value));
  }
  return py::reinterpret_borrow<py::sequence>(value);
}

// Where `wanted` is first found inside a record, or null.
const void* Find(const Type& wanted, const Type& type, const void* memory) {
  if (&wanted == &type) return memory;
  if (type.What == Kind::List && Read<std::uint32_t>(memory) > 0) {
    return Find(wanted, *type.Element, At(memory, type.Items));
  }
  for (std::size_t i = 0; i < type.FieldCount; ++i) {
    const Field& field = type.Fields[i];
    if (const void* const found = Find(wanted, *field.What, At(memory, field.Offset))) return found;
  }
  return nullptr;
}

}  // namespace

void Refuse(PyObject* kind, const std::string& text) {
  PyErr_SetString(kind, text.c_str());
  throw py::error_already_set();
}

std::string TypeName(py::handle value) {
  return Py_TYPE(value.ptr())->tp_name;
}

double RealOf(py::handle value, const std::string& name) {
  const double real = PyFloat_AsDouble(value.ptr());
  if (real == -1 && PyErr_Occurred() != nullptr) {
    if (PyErr_ExceptionMatches(PyExc_TypeError) == 0) throw py::error_already_set();
    PyErr_Clear();
    Refuse(PyExc_TypeError, name + " must be a float, not " + TypeName(value));
  }
  return real;
}

std::int64_t IntegerOf(py::handle value, std::int64_t least, std::uint64_t most, const std::string& name) {
  const auto index = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
  if (!index) {
    PyErr_Clear();
    Refuse(PyExc_TypeError, name + " must be an int, not " + TypeName(value));
  }
  int overflow = 0;
  const long long number = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
  if (overflow == 0 && number >= least && (number < 0 || static_cast<std::uint64_t>(number) <= most))
    return number;
  if (overflow > 0 && most > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
    const unsigned long long large = PyLong_AsUnsignedLongLong(index.ptr());
    if (PyErr_Occurred() == nullptr) return static_cast<std::int64_t>(large);
    PyErr_Clear();
  }
  Refuse(PyExc_OverflowError, name + " must be " + std::to_string(least) + " to " + std::to_string(most));
}

bool BoolOf(py::handle value, const std::string& name) {
  if (PyBool_Check(value.ptr()) == 0)
    Refuse(PyExc_TypeError, name + " must be a bool, not " + TypeName(value));
  return value.ptr() == Py_True;
}

py::str TextFrom(const char* text, std::size_t length) {
  PyObject* const decoded = PyUnicode_DecodeUTF8(text, static_cast<Py_ssize_t>(length), "surrogateescape");
  if (decoded == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(decoded);
}

py::bytes BytesOf(py::handle text, const std::string& name) {
  py::bytes bytes;
  if (PyUnicode_Check(text.ptr())) {
    PyObject* const encoded = PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape");
    if (encoded == nullptr) throw py::error_already_set();
    bytes = py::reinterpret_steal<py::bytes>(encoded);
  } else if (PyBytes_Check(text.ptr())) {
    bytes = py::reinterpret_borrow<py::bytes>(text);
  } else {
    Refuse(PyExc_TypeError, name + " must be a str or bytes, not " + TypeName(text));
  }
  if (std::strlen(PyBytes_AS_STRING(bytes.ptr())) !=
      static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr()))) {
    Refuse(PyExc_ValueError, name + " must not hold a zero");
  }
  return bytes;
}

py::object EnumValue(const char* enumName, py::object number) {
  try {
    return ClassNamed(enumName)(number);
  } catch (py::error_already_set& error) {
    if (!error.matches(PyExc_ValueError)) throw;
    return number;
  }
}

const Type& RecordNamed(const std::string& name) {
  for (const Record& record : Records()) {
    if (name == record.What->Name) return *record.What;
  }
  throw py::key_error(name);
}

py::object FromC(const Type& type, const void* memory, const char* enumName) {
  const auto number = [&](auto value) -> py::object {
    return enumName != nullptr ? EnumValue(enumName, py::int_(value)) : py::int_(value);
  };
  switch (type.What) {
    case Kind::Bool:
      return py::bool_(Read<bool>(memory));
    case Kind::Int32:
      return number(Read<std::int32_t>(memory));
    case Kind::UInt32:
      return number(Read<std::uint32_t>(memory));
    case Kind::UInt16:
      return number(Read<std::uint16_t>(memory));
    case Kind::Double:
      return py::float_(Read<double>(memory));
    case Kind::Text:
      return TextFrom(At(memory, 0), strnlen(At(memory, 0), type.Size));
    case Kind::Array:
    case Kind::List: {
      const std::size_t count = type.What == Kind::List ? Read<std::uint32_t>(memory) : type.Count;
      py::list list;
      for (std::size_t i = 0; i < std::min(count, type.Count); ++i) {
        list.append(FromC(*type.Element, At(memory, type.Items + i * type.Element->Size), enumName));
      }
      return list;
    }
    case Kind::Record:
      break;
  }
  const py::handle recordClass = ClassNamed(type.Name);
  const py::object record = recordClass.attr("__new__")(recordClass);
  Refresh(type, memory, record);
  return record;
}

void Refresh(const Type& type, const void* memory, py::handle record) {
  for (std::size_t i = 0; i < type.FieldCount; ++i) {
    const Field& field = type.Fields[i];
    py::setattr(record, field.Name, FromC(*field.What, At(memory, field.Offset), field.Enum));
  }
}

void ToC(const Type& type, py::handle value, void* memory, const std::string& name) {
  switch (type.What) {
    case Kind::Bool: {
      const bool given = BoolOf(value, name);
      std::memcpy(memory, &given, sizeof given);
      return;
    }
    case Kind::Int32:
      return WriteInteger<std::int32_t>(value, memory, name);
    case Kind::UInt32:
      return WriteInteger<std::uint32_t>(value, memory, name);
    case Kind::UInt16:
      return WriteInteger<std::uint16_t>(value, memory, name);
    case Kind::Double: {
      const double given = RealOf(value, name);
      std::memcpy(memory, &given, sizeof given);
      return;
    }
    case Kind::Text: {
      const py::bytes bytes = BytesOf(value, name);
      const auto length = static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr()));
      if (length >= type.Size) {
        Refuse(PyExc_ValueError, name + " has room for " + std::to_string(type.Size - 1) + " bytes");
      }
      std::memset(memory, 0, type.Size);
      std::memcpy(memory, PyBytes_AS_STRING(bytes.ptr()), length);
      return;
    }
    case Kind::Array: {
      const py::sequence values = SequenceOf(value, name);
      if (values.size() != type.Count) {
        Refuse(PyExc_ValueError, name + " must have " + std::to_string(type.Count) + " elements");
      }
      return WriteElements(type, values, memory, name);
    }
    case Kind::List: {
      const py::sequence values = SequenceOf(value, name);
      if (values.size() > type.Count) {
        Refuse(PyExc_ValueError, name + " has room for " + std::to_string(type.Count) + " elements");
      }
      const auto count = static_cast<std::uint32_t>(values.size());
      std::memcpy(memory, &count, sizeof count);
      return WriteElements(type, values, At(memory, type.Items), name);
    }
    case Kind::Record:
      break;
  }
  if (!py::isinstance(value, ClassNamed(type.Name))) {
    Refuse(PyExc_TypeError, name + " must be a " + type.Name + ", not " + TypeName(value));
  }
  for (std::size_t i = 0; i < type.FieldCount; ++i) {
    const Field& field = type.Fields[i];
    ToC(*field.What, py::getattr(value, field.Name), At(memory, field.Offset), name + "." + field.Name);
  }
}

py::object Defaults(const std::string& name) {
  const Type& wanted = RecordNamed(name);
  for (const bool own : {true, false}) {
    for (const Record& record : Records()) {
      if (record.Init == nullptr || own != (record.What == &wanted)) continue;
      std::vector<std::max_align_t> memory(record.What->Size / sizeof(std::max_align_t) + 1);
      record.Init(memory.data());
      if (const void* const found = Find(wanted, *record.What, memory.data())) return FromC(wanted, found);
    }
  }
  const std::vector<std::max_align_t> zeros(wanted.Size / sizeof(std::max_align_t) + 1);
  return FromC(wanted, zeros.data());
}

}  // namespace KelvoPython
