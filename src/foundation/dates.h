// foundation/dates.h: the device clock as text, always UTC, receipts included. Each function returns its own
// shared buffer, overwritten by its next call.
#pragma once

namespace lumo {

const char *IsoTimestamp();      // "2012-12-05T10:00:00Z"
const char *ReceiptTimestamp();  // "2012/12/05      10:00:00", 24 columns
const char *DateToYYMMDD(
    const char *date);  // "121205" for the first form; "000000" for a text of another form or null

}  // namespace lumo
