// The compiled module: the classes, and on them what the table has.
#include <map>
#include <memory>

#include "Callbacks.h"
#include "Function.h"
#include "Handles.h"
#include "Interpreter.h"
#include "Records.h"
#include "Table.h"
#include "kelvo/kelvo.h"

namespace KelvoPython {
namespace {

PyObject* errorClass = nullptr;

template <class T>
void AddLife(py::class_<T>& type) {
  type.def("close", &T::Close, "Ends it. Later calls are harmless.");
  type.def("__enter__", [](py::object self) { return self; });
  type.def("__exit__",
           [](T& self, const py::object&, const py::object&, const py::object&) { self.Close(); });
}

py::class_<Card> AddCard(py::module_& module) {
  py::class_<Card> card(module, "_Card",
                        "A connection to a card. Ends with close(), or with the block of `with`.");
  card.def(py::init<py::object, std::int32_t>(), py::arg("host") = "127.0.0.1",
           py::arg("port") = KELVO_DEFAULT_PORT,
           "Connects to a card: to a host's name or address and a port, or to a card that was found "
           "(CardInfo).\n\n"
           "C: vlConnect, vlConnectByCardInfo; close(): vlDisconnect");
  AddLife(card);
  card.def_property_readonly("handle", &Card::Handle,
                             "The connection's handle, for programs that also call C.");
  card.def_property_readonly("closed", &Card::IsClosed, "Whether close() has been called.");
  card.def(
      "new_list",
      [](py::object self, const py::object& text) {
        const std::int32_t handle = self.cast<const Card&>().Handle();
        if (text.is_none()) return std::make_unique<List>(std::move(self), vlListAllocate(handle));
        const py::bytes bytes = BytesOf(text, "text");
        return std::make_unique<List>(std::move(self),
                                      vlListAllocateFromString(handle, PyBytes_AS_STRING(bytes.ptr())));
      },
      py::arg("text") = py::none(),
      "Makes an empty list, or one from its text.\n\nC: vlListAllocate, vlListAllocateFromString; its "
      "close(): "
      "vlListReleaseHandle");
  card.def(
      "new_font",
      [](py::object self, std::int32_t id) {
        const std::int32_t handle = self.cast<const Card&>().Handle();
        return std::make_unique<Font>(std::move(self), vlFontAllocate(handle, id));
      },
      py::arg("font_id"),
      "Makes a font without glyphs, which has that id on the card.\n\nC: vlFontAllocate; its close(): "
      "vlFontReleaseHandle");
  const auto on = [&card](const char* name, Event event, const char* help) {
    card.def(
        name,
        [event](py::object self, py::object function) {
          return std::make_unique<Registration>(std::move(self), event, std::move(function));
        },
        py::arg("callback"), help);
  };
  on("on_progress", Event::Progress,
     "Calls `callback` with each progress value, on the connection's thread. At most five of a kind. It "
     "stays\n"
     "registered until close() of the result. An exception in it goes to sys.unraisablehook.\n\n"
     "C: vlListRegisterProgressCallback, vlListUnRegisterProgressCallback");
  on("on_list_done", Event::ListDone,
     "on_progress() for the ends of lists: `callback` gets the list's id.\n\n"
     "C: vlListRegisterListDoneCallback, vlListUnRegisterListDoneCallback");
  on("on_list_idle", Event::ListIdle,
     "on_progress() for when the card is idle after a list: `callback` gets the list's id.\n\n"
     "C: vlListRegisterListIdleCallback, vlListUnRegisterListIdleCallback");
  on("on_error_event", Event::Error,
     "on_progress() for errors that the card reports outside of any call: `callback` gets their kind and "
     "text.\n\n"
     "C: vlListRegisterErrorEventCallback, vlListUnRegisterErrorEventCallback");
  return card;
}

template <class T>
py::class_<T> AddOwned(py::module_& module, const char* name, const char* help) {
  py::class_<T, Owned> type(module, name, help);
  type.def(
      "close", [](T& self) { self.Close(); }, "Releases it. Later calls are harmless.");
  type.def("__enter__", [](py::object self) { return self; });
  type.def("__exit__",
           [](T& self, const py::object&, const py::object&, const py::object&) { self.Close(); });
  type.def_property_readonly("handle", &T::Handle, "Its handle, for programs that also call C.");
  return type;
}

void AddTable(py::module_& module, const std::map<std::string, py::object>& classes) {
  static auto& functions = *new std::map<std::pair<std::string, std::string>, Function>;
  for (const Row& row : Rows()) {
    const auto [found, isNew] = functions.try_emplace({row.Owner, row.Name}, row.Name, row.Help);
    found->second.Add(row);
    if (!isNew) continue;
    const Function* const function = &found->second;
    const auto call = [function](const py::args& arguments, const py::kwargs& keywords) {
      return (*function)(arguments, keywords);
    };
    const bool isMethod = *row.Owner != '\0';
    const py::object owner = isMethod ? classes.at(row.Owner) : py::object(module);
    // Not py::cpp_function(..., py::is_method()): the first of args is the object.
    py::cpp_function entry(call, py::name(row.Name), py::scope(owner), py::doc(row.Help));
    py::object method =
        isMethod ? py::reinterpret_steal<py::object>(PyInstanceMethod_New(entry.ptr())) : entry;
    py::setattr(owner, row.Name, method);
  }
}

void Fill(py::module_& module) {
  py::options options;
  options.disable_function_signatures();

  errorClass = py::exception<Error>(module, "Error").release().ptr();
  py::setattr(errorClass, "__doc__",
              py::str("A function of the library failed; the text is its last error.\n\n"
                      "C: vlGetLastError"));
  py::register_exception_translator([](std::exception_ptr pointer) {
    try {
      if (pointer) std::rethrow_exception(pointer);
    } catch (const Error& error) {
      PyErr_SetObject(errorClass, TextFrom(error.what(), std::strlen(error.what())).ptr());
    }
  });

  py::class_<Registration> registration(module, "Registration", "A registered callback.");
  AddLife(registration);
  std::map<std::string, py::object> classes;
  const py::class_<Card> card = AddCard(module);
  classes["Card"] = card;
  py::class_<Owned> owned(module, "_Owned");
  auto list = AddOwned<List>(
      module, "List",
      "A list of commands, in the memory of this process. Most of its methods append a command.\n"
      "card.lists.set() uploads it, card.run() also runs it.");
  list.def("__len__", [](const List& self) {
    const std::int32_t count = vlListCommandCount(self.Handle());
    if (count < 0) throw Error(LastError());
    return static_cast<std::size_t>(count);
  });
  classes["List"] = list;
  classes["Font"] = AddOwned<Font>(module, "Font", "A font: a list of commands for each of its characters.");

  py::class_<CardArea> area(module, "Area", "A part of what a card does.");
  area.def(py::init([](const py::object& owner) {
             owner.cast<Card&>();
             return CardArea{owner};
           }),
           py::arg("card"));
  const py::handle property(reinterpret_cast<PyObject*>(&PyProperty_Type));
  const py::handle metaclass(reinterpret_cast<PyObject*>(Py_TYPE(area.ptr())));
  for (const Area& each : Areas()) {
    py::dict members;
    members["__doc__"] = each.Help;
    members["__module__"] = module.attr("__name__");
    const py::object type = metaclass(each.Class, py::make_tuple(area), members);
    py::setattr(module, each.Class, type);
    py::setattr(card, each.Attribute,
                property(py::cpp_function([type](const py::object& owner) { return type(owner); })));
    classes[each.Class] = type;
  }
  AddTable(module, classes);
  module.def("_defaults", &Defaults, py::arg("name"), "A record with the library's defaults.");

  py::module_::import("atexit").attr("register")(py::cpp_function([] {
    CloseDoor();
    Card::EndAll();
  }));
}

}  // namespace
}  // namespace KelvoPython

PYBIND11_MODULE(_core, module) {
  KelvoPython::Fill(module);
}
