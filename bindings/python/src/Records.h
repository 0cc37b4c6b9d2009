// Records between the structs of C and the classes of Python, by their descriptions in the table.
#pragma once

#include <string>
#include <string_view>

#include "Interpreter.h"
#include "Table.h"

namespace KelvoPython {

const Type& RecordNamed(const std::string& name);

// `name` says in errors what could not be taken.
py::object FromC(const Type& type, const void* memory, const char* enumName = nullptr);
void ToC(const Type& type, py::handle value, void* memory, const std::string& name);
// Writes all fields of a record to an object that is there.
void Refresh(const Type& type, const void* memory, py::handle record);

// A record with the defaults of the library, also one that has them as a part of another only.
py::object Defaults(const std::string& name);

// A number as a constant of an enumeration, or as it is when there is none.
py::object EnumValue(const char* enumName, py::object number);

// Texts from the library may hold any bytes.
py::str TextFrom(const char* text, std::size_t length);
// The bytes of a str or bytes without a zero.
py::bytes BytesOf(py::handle text, const std::string& name);

double RealOf(py::handle value, const std::string& name);
std::int64_t IntegerOf(py::handle value, std::int64_t least, std::uint64_t most, const std::string& name);
bool BoolOf(py::handle value, const std::string& name);

[[noreturn]] void Refuse(PyObject* kind, const std::string& text);
std::string TypeName(py::handle value);

}  // namespace KelvoPython
