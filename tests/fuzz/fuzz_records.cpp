// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "fleet/DeviceReport.h"
#include "records/RecordCodec.h"

#include <cstdint>
#include <cstdlib>

using namespace velmora;

/// Whatever a store holds as a record, reading it ends; what is found is written and read again the same, and
/// makes a device's report.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    const auto fields = record_codec::decode(text);
    if (!fields) return 0;
    const auto written = record_codec::encode(*fields);
    constexpr std::size_t longerNumbers = record_codec::maximumFields * 32;
    if (!written && size + longerNumbers < record_codec::maximumBytes) std::abort();
    if (written && record_codec::decode(*written) != fields) std::abort();
    const DeviceReport report(CloudRecord(device_record::type, std::string(text), *fields));
    if (report.inForce && !fields->contains(device_record::limitInForce)) std::abort();
    return 0;
}
