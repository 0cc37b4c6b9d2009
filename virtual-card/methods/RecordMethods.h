// The four methods of a configuration record, as rows of a method table.
#pragma once

#include "methods/MethodTable.h"

// `name` is what the methods have in common ("LaserConfig" for "GetLaserConfig"), `member` the record's place in
// CardConfiguration.
#define KELVO_RECORD_METHODS(name, member, Type)                                                             \
  Method("Get" name, [](Card& card) { return card.Configuration.member.Get(); }),                            \
      Method("Set" name, [](Card& card, Type record) { card.Configuration.member.Set(std::move(record)); }), \
      Method("Load" name, [](Card& card) { card.Configuration.member.Load(); }),                             \
      Method("Store" name, [](Card& card) { card.Configuration.member.Store(); })
