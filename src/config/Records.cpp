// The parts of records that are compiled once: a line for each.
#include "config/LaserConfig.h"
#include "config/RecordText.h"
#include "config/ScannerConfig.h"
#include "config/ScannerMonitoringConfig.h"

namespace VELTRO::KELVO::ClientLib {

template class Record<LaserConfig, 8>;
template class Record<ScanHeadConfig, 10>;
template class Record<ScannerConfig, 12>;
template class Record<ScannerMonitoringConfig, 2>;

}  // namespace VELTRO::KELVO::ClientLib
