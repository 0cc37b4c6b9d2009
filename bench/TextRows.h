#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Harness.h"
#include "common/Point.h"

namespace VELTRO::KELVO::Bench {

// The rows of the text form, reference and library: nothing of them needs the server.
void RegisterTextRows(Harness& harness);

// What the rows of peers share with them: the marks, and those as JSON, [{"MA":{"X":1,"Y":2}}, ...]; the rows of the
// library.
const std::vector<ClientLib::Point2D>& Marks();
std::string MarksAsJson();
double FastestMilliseconds(const std::function<void()>& work);
double RunLibraryWriting(RowContext& context);
double RunLibraryReading(RowContext& context);

}  // namespace VELTRO::KELVO::Bench
