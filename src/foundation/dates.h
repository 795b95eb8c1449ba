// foundation/dates.h: the device clock as text, always UTC, receipts included. Each function returns its own
// shared buffer, overwritten by its next call.
#pragma once

namespace lumo {

const char *IsoTimestamp();      // "2012-12-05T10:00:00Z"
const char *ReceiptTimestamp();  // "2012/12/05      10:00:00", 24 columns
// "121205" for "2012-12-05T10:00:00Z"; "000000" for a text of another form, and for null.
const char *DateToYYMMDD(const char *date);

}  // namespace lumo
