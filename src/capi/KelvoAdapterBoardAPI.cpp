#include "kelvo/KelvoAdapterBoardAPI.h"

#include "capi/FlatRecord.h"
#include "peripherals/AdapterBoardAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlAdapterBoardInitConfig(vlAdapterBoardConfig* config) {
  return Flat::Init<AdapterBoardConfig>(config);
}

int32_t vlAdapterBoardGetConfig(int32_t handle, vlAdapterBoardConfig* config) {
  return Flat::Get<AdapterBoardAPI>(handle, config);
}

int32_t vlAdapterBoardSetConfig(int32_t handle, const vlAdapterBoardConfig* config) {
  return Flat::Set<AdapterBoardAPI, AdapterBoardConfig>(handle, config);
}

int32_t vlAdapterBoardLoadConfig(int32_t handle) {
  return Flat::Load<AdapterBoardAPI>(handle);
}

int32_t vlAdapterBoardStoreConfig(int32_t handle) {
  return Flat::Store<AdapterBoardAPI>(handle);
}

int32_t vlAdapterBoardToStringConfig(const vlAdapterBoardConfig* config, char* buffer, uint32_t size,
                                     uint32_t* length) {
  return Flat::ToString<AdapterBoardConfig>(config, buffer, size, length);
}

int32_t vlAdapterBoardGetIdentity(int32_t handle, vlAdapterBoardIdentity* identity) {
  return On<AdapterBoardAPI>(handle, [&](AdapterBoardAPI& board) {
    NotNull(identity, "identity");
    vlAdapterBoardIdentity flat{};
    Flat::FromRecord(board.GetIdentity(), flat);
    *identity = flat;
  });
}
