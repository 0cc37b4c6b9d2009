// A place that does not answer those who connect to it.
#pragma once

#include <netinet/in.h>

#include "common/Descriptor.h"
#include "support/Usual.h"

namespace VELTRO::KELVO::Test {

// A listener whose backlog is full: a connect to it gets no answer at all.
class BlackHole {
 public:
  BlackHole() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(listener_.Get(), generic, length), 0);
    EXPECT_EQ(listen(listener_.Get(), 0), 0);
    getsockname(listener_.Get(), generic, &length);
    EXPECT_EQ(connect(filler_.Get(), generic, length), 0);
    port = ntohs(address.sin_port);
  }
  int port = 0;

 private:
  const ClientLib::Descriptor listener_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  const ClientLib::Descriptor filler_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

}  // namespace VELTRO::KELVO::Test
