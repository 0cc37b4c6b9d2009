// What one connection handle stands for: the connection and what the flat interface keeps with it.
#pragma once

#include <unistd.h>

#include <cstdint>

#include "capi/HandleTable.h"
#include "client/ClientAPI.h"
#include "lists/ListAPI.h"
#include "services/FontAPI.h"

namespace VELTRO::KELVO::ClientLib {

struct ConnectionContext {
  explicit ConnectionContext(std::int32_t handle) : Lists(handle), Fonts(handle) {}

  ListAPI GetListAPI() { return {Client, Client.GetListEvents()}; }
  FontAPI GetFontAPI() { return FontAPI(Client); }

  // Ends every list and font, also for threads that hold one.
  void EndHandles() {
    Lists.ReleaseAll();
    Fonts.ReleaseAll();
  }

  const pid_t Process = getpid();  // whose the connection is: a child of fork has it, too, but not its thread
  ClientAPI Client;
  ListTable Lists;
  FontTable Fonts;
};

}  // namespace VELTRO::KELVO::ClientLib
