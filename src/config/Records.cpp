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

template class Record<LaserConfig, LaserConfig::CurrentConfigVersion>;
template class Record<SkyWritingSettings, SkyWritingSettings::CurrentConfigVersion>;
template class Record<WobbleSettings, WobbleSettings::CurrentConfigVersion>;
template class Record<ProcessVariables, ProcessVariables::CurrentConfigVersion>;
template class Record<MotfSource, MotfSource::CurrentConfigVersion>;
template class Record<MotfConfig, MotfConfig::CurrentConfigVersion>;
template class Record<QuadratureDecoderModule, QuadratureDecoderModule::CurrentConfigVersion>;
template class Record<QuadratureDecoderConfig, QuadratureDecoderConfig::CurrentConfigVersion>;
template class Record<ScanHeadConfig, ScanHeadConfig::CurrentConfigVersion>;
template class Record<ScannerConfig, ScannerConfig::CurrentConfigVersion>;
template class Record<ScannerMonitoringConfig, ScannerMonitoringConfig::CurrentConfigVersion>;
template class Record<SystemConfig, SystemConfig::CurrentConfigVersion>;

}  // namespace VELTRO::KELVO::ClientLib
