// Where a program sees how a verb on a file ended: two digits in FILE STATUS, and the extended
// status behind them. File-system modules compile this source as well, so it stands on exported
// functions alone.
#ifndef ZOR_FILE_STATUS_AREAS_H
#define ZOR_FILE_STATUS_AREAS_H

#include <cstdint>
#include <span>

#include "fcb.h"

namespace zor {

// The description that counts for a verb of the program: its own, where programs share the block of
// an EXTERNAL file. One that describes nothing where the block has none.
const FileDescription &descriptionOf(const FCB &file, const IPCB *ipcb);

// The item of FILE STATUS; null when the program has none.
uint8_t *statusItemOf(const FileDescription &description);

// The area of the extended status; empty when the program has none.
std::span<uint8_t> extendedStatusOf(const FileDescription &description);

// Stores FCB.status as two digits in the item's form.
void storeStatusDigits(const FCB &file, const FileDescription &description);

// Fills the area: FCB.status2 as six digits, 0 for status 0; for the statuses 33, 35 and 96 the
// file's name behind them. An area too short for the digits gets blanks alone.
void buildExtendedStatus(const FCB &file, const FileDescription &description);

// Fills the area for an extended status of 0.
void clearExtendedStatus(const FileDescription &description);

// Brings an area that was left in the native code page into the form that the program wants. One
// that is in EBCDIC already stays as it is.
void convertExtendedStatus(const FileDescription &description);

} // namespace zor

#endif
