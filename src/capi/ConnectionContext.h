// What one connection handle stands for: the connection and what the flat interface keeps with it.
#pragma once

#include <cstdint>

#include "capi/ListTable.h"
#include "client/ClientAPI.h"
#include "lists/ListAPI.h"

namespace VELTRO::KELVO::ClientLib {

struct ConnectionContext {
  explicit ConnectionContext(std::int32_t handle) : Lists(handle) {}

  ListAPI GetListAPI() { return {Client, Client.GetListEvents()}; }

  ClientAPI Client;
  ListTable Lists;
};

}  // namespace VELTRO::KELVO::ClientLib
