#pragma once

#include "readers/photographs/FieldCollector.h"

#include <string_view>

namespace searchsystem {

/// The first byte of every data set.
constexpr char iptcMark = '\x1C';

/// Reads the data sets of the application record (IPTC IIM 4.2, 1.5 and 6). Their character set is
/// the one that the envelope record declares (1:90), else it is guessed.
void readIPTCRecords(std::string_view records, FieldCollector &fields);

} // namespace searchsystem
