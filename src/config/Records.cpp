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

template class Record<LaserConfig>;
template class Record<SkyWritingSettings>;
template class Record<WobbleSettings>;
template class Record<ProcessVariables>;
template class Record<MotfSource>;
template class Record<MotfConfig>;
template class Record<QuadratureDecoderModule>;
template class Record<QuadratureDecoderConfig>;
template class Record<ScanHeadConfig>;
template class Record<ScannerConfig>;
template class Record<ScannerMonitoringConfig>;
template class Record<SystemConfig>;

}  // namespace VELTRO::KELVO::ClientLib
