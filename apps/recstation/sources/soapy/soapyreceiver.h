// A receiver behind a SoapySDR driver.
#pragma once

#include <memory>
#include <string>

#include <QString>

#include "iqspectra/receiver.h"

namespace RecStation {

/// @param args which device, as SoapySDRUtil --find shows it: "driver=rtlsdr,serial=1"; empty: any
[[nodiscard]] std::unique_ptr<IqReceiver> makeSoapyReceiver(const std::string& args);

/// Whether drivers would take the text for a description of a device.
[[nodiscard]] bool isSoapyArgs(const std::string& args);

/// What the device is called in recordings: its driver, behind a server that one's.
[[nodiscard]] QString soapyName(const std::string& args);

}  // namespace RecStation
