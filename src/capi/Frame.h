// The one shape of every exported function: clear the last error, do the work, and turn whatever is thrown
// into the last error and -1.
#pragma once

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "capi/APIContext.h"
#include "capi/KelvoErrorHandler.h"
#include "capi/RecentList.h"

namespace VELTRO::KELVO::ClientLib {

// Returns what `work` returns, 0 when that is nothing, -1 when it throws.
template <class Work>
auto Guarded(Work&& work) noexcept {
  using Returned = std::invoke_result_t<Work>;
  using Result = std::conditional_t<std::is_void_v<Returned>, std::int32_t, Returned>;
  KelvoErrorHandler& error = KelvoErrorHandler::getThreadLocalInstance();
  error.Clear();
  try {
    if constexpr (std::is_void_v<Returned>) {
      work();
      return Result{0};
    } else {
      return work();
    }
  } catch (const std::exception& exception) {
    error.InsertError(exception);
  } catch (...) {
    error.InsertError("Unexpected error!");
  }
  return static_cast<Result>(-1);
}

// On the connection of a handle, which lives at least as long as `work` runs.
template <class Work>
auto OnConnection(std::int32_t handle, Work&& work) noexcept {
  return Guarded([&] { return work(*APIContext::getInstance().Share(handle)); });
}

// The same for what waits for the library's own threads, which a forked child does not have.
template <class Work>
auto OnOwnConnection(std::int32_t handle, Work&& work) noexcept {
  return Guarded([&] { return work(*APIContext::getInstance().ShareOwn(handle)); });
}

// On an area of the connection's card, such as LaserAPI.
template <class API, class Work>
auto On(std::int32_t handle, Work&& work) noexcept {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    API api(connection.Client);
    return work(api);
  });
}

// The list of a list handle, valid until this thread looks for another one.
inline ListTable::Entry& FindList(std::int64_t list) {
  return ThreadOwned<RecentList>::Get().Find(list);
}

// A copy of the list of a list handle, which shares its commands' memory until either is changed.
inline CommandList CopyList(std::int64_t list) {
  return FindList(list).Use([](const CommandList& commands) { return commands; });
}

// On the list of a list handle, under its lock.
template <class Work>
auto OnList(std::int64_t list, Work&& work) noexcept {
  return Guarded([&] { return FindList(list).Use(work); });
}

// The same for the font of a font handle.
template <class Work>
auto OnFont(std::int64_t font, Work&& work) noexcept {
  return Guarded([&] {
    const auto connection = APIContext::getInstance().Share(FontTable::ConnectionOf(font));
    return connection->Fonts.Get(font)->Use(work);
  });
}

// The argument `name`, which must not be null.
template <class T>
T* NotNull(T* pointer, const char* name) {
  if (pointer == nullptr)
    throw std::runtime_error(std::string("A null pointer was passed for '") + name + "'.");
  return pointer;
}

}  // namespace VELTRO::KELVO::ClientLib
