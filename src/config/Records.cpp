// The parts of records that are compiled once: a line for each.
#include "config/LaserConfig.h"
#include "config/RecordText.h"
#include "config/ScannerMonitoringConfig.h"
#include "config/SystemConfig.h"

namespace VELTRO::KELVO::ClientLib {

template class Record<LaserConfig, 8>;
template class Record<ScannerMonitoringConfig, 2>;
template class Record<SystemConfig, 5>;

}  // namespace VELTRO::KELVO::ClientLib
