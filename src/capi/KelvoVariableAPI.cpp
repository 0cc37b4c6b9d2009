#include "kelvo/KelvoVariableAPI.h"

#include "capi/CallersArray.h"
#include "capi/FlatRecord.h"
#include "peripherals/VariableAPI.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

// On the card's variables, for a function that takes the name of one.
template <class Work>
int32_t OnNamed(int32_t handle, const char* name, Work&& work) {
  return On<VariableAPI>(handle, [&](VariableAPI& variables) {
    NotNull(name, "name");
    work(variables);
  });
}

}  // namespace

int32_t vlVariableSetBoolean(int32_t handle, const char* name, bool value) {
  return OnNamed(handle, name, [&](VariableAPI& variables) { variables.SetBoolean(name, value); });
}

int32_t vlVariableGetBoolean(int32_t handle, const char* name, bool* value) {
  return OnNamed(handle, name, [&](VariableAPI& variables) {
    NotNull(value, "value");
    *value = variables.GetBoolean(name);
  });
}

int32_t vlVariableSetInteger(int32_t handle, const char* name, int32_t value) {
  return OnNamed(handle, name, [&](VariableAPI& variables) { variables.SetInteger(name, value); });
}

int32_t vlVariableGetInteger(int32_t handle, const char* name, int32_t* value) {
  return OnNamed(handle, name, [&](VariableAPI& variables) {
    NotNull(value, "value");
    *value = variables.GetInteger(name);
  });
}

int32_t vlVariableSetMarkCounter(int32_t handle, const char* name, const vlMarkCounter* counter) {
  return OnNamed(handle, name, [&](VariableAPI& variables) {
    variables.SetMarkCounter(name, Flat::Taken<MarkCounter>(counter, "counter"));
  });
}

int32_t vlVariableGetMarkCounter(int32_t handle, const char* name, vlMarkCounter* counter) {
  return OnNamed(handle, name, [&](VariableAPI& variables) {
    NotNull(counter, "counter");
    Flat::FromRecord(variables.GetMarkCounter(name), *counter);
  });
}

int32_t vlVariableResetMarkCounter(int32_t handle, const char* name) {
  return OnNamed(handle, name, [&](VariableAPI& variables) { variables.ResetMarkCounter(name); });
}

int32_t vlVariableSetMarkTimeFormat(int32_t handle, const char* format) {
  return On<VariableAPI>(
      handle, [&](VariableAPI& variables) { variables.SetMarkTimeFormat(NotNull(format, "format")); });
}

int32_t vlVariableGetMarkTimeFormat(int32_t handle, char* buffer, uint32_t size, uint32_t* length) {
  return On<VariableAPI>(handle, [&](VariableAPI& variables) {
    TellText(buffer, size, length, [&] { return variables.GetMarkTimeFormat(); });
  });
}

int32_t vlVariableGetAll(int32_t handle, vlCardVariable* variables, uint32_t capacity, uint32_t* count) {
  return On<VariableAPI>(handle, [&](VariableAPI& api) {
    CallersArray array(variables, "variables", capacity, count);
    Flat::FillArray(array, api.GetAll(), "Buffer is too small.");
  });
}
