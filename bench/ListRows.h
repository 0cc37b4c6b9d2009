#pragma once

#include "Harness.h"

namespace VELTRO::KELVO::Bench {

// Building lists and uploading them.
void RegisterListRows(Harness& harness);

// What the rows of peers share with them.
inline constexpr int kUploadMarks = 1'000'000;
double UploadRate(std::uint64_t nanoseconds);
double RunLibraryUpload(RowContext& context);

}  // namespace VELTRO::KELVO::Bench
