// A function of Python over one or several of C: chooses the one that fits the arguments, converts them, calls it, and
// converts what comes back.
#pragma once

#include <string>
#include <vector>

#include "Arrays.h"
#include "Interpreter.h"
#include "Table.h"

namespace KelvoPython {

enum class ParameterKind {
  Real,
  Integer,
  Bool,
  Char,
  Text,
  Path,
  List,
  Font,
  Array,
  Record,
  ChangedRecord,
  Progress,
  Wait,
  OutReal,
  OutInteger,
  OutBool,
  OutText,
  OutFixedText,
  OutNames,
  OutWordsOfNames,
  OutArray,
  OutRecords,
  OutMirror,
  OutRecord
};

// One word of a row's parameters, NAME:KIND@TYPE=DEFAULT, as faces.py writes it.
struct Parameter {
  std::string Name;
  std::string Label;  // with the function's name, for errors
  ParameterKind What = ParameterKind::Real;
  std::int64_t Least = 0;  // of integers
  std::uint64_t Most = 0;
  std::size_t Size = 0;  // of integers that come back
  ArrayKind Elements;
  const Type* RecordType = nullptr;
  std::string Enum;    // empty for none
  py::object Default;  // null when it must be given

  bool IsOut() const { return What >= ParameterKind::OutReal; }
};

// One way of calling a function: a row of the table.
struct Way {
  const Row* From = nullptr;
  std::vector<Parameter> Parameters;
  std::string Result;  // "int", "list", "font" or empty
};

class Function {
 public:
  Function(std::string name, std::string help) : name_(std::move(name)), help_(std::move(help)) {}

  void Add(const Row& row);

  py::object operator()(const py::args& arguments, const py::kwargs& keywords) const;

 private:
  using Bound = std::vector<py::handle>;

  bool Bind(const Way& way, const py::args& arguments, std::size_t first, const py::kwargs& keywords,
            Bound& bound) const;
  py::object CallRows(std::int64_t handle, py::handle rows) const;
  py::object Call(const Way& way, py::handle self, const Bound& bound) const;

  std::string name_;
  std::string help_;
  std::vector<Way> ways_;
};

}  // namespace KelvoPython
