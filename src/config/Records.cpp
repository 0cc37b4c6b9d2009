// The parts of records that are compiled once: a line for each.
#include "config/LaserConfig.h"
#include "config/MotfConfig.h"
#include "config/ProcessVariables.h"
#include "config/QuadratureDecoderConfig.h"
#include "config/RecordText.h"
#include "config/ScannerConfig.h"
#include "config/ScannerMonitoringConfig.h"
#include "config/SystemConfig.h"

namespace VELTRO::KELVO::ClientLib {

template class Record<LaserConfig, 8>;
template class Record<SkyWritingSettings, 4>;
template class Record<WobbleSettings, 1>;
template class Record<ProcessVariables, 18>;
template class Record<MotfSource, 2>;
template class Record<MotfConfig, 9>;
template class Record<QuadratureDecoderModule, 4>;
template class Record<QuadratureDecoderConfig, 4>;
template class Record<ScanHeadConfig, 10>;
template class Record<ScannerConfig, 12>;
template class Record<ScannerMonitoringConfig, 2>;
template class Record<SystemConfig, 5>;

}  // namespace VELTRO::KELVO::ClientLib
