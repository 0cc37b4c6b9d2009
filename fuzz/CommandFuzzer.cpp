// Commands and lists: payloads from anywhere are walked and rebuilt, lists from the wire are converted and
// packed again, and lists that are built are read back. The first byte of the input chooses which.
#include "CommandSubjects.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace VELTRO::KELVO::Fuzz;
  Cursor input(data, size);
  switch (input.Next<std::uint8_t>() % 3) {
    case 0:
      LookAtPayload(input);
      break;
    case 1:
      LookAtList(input);
      break;
    default:
      BuildList(input);
      break;
  }
  return 0;
}
