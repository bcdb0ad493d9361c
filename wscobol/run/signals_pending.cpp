#include "run/signals.h"
namespace zor {
void installSignalTable(SignalRow *) {}
void removeTopSignalTable() {}
void removeAlternateStack() {}
}
#include <cstring>
#include "run/options.h"
#include "proccom.h"
namespace zor { void readRunTimeOptions() { _zorProccom->options1=0x0A000000; memcpy(_zorProccom->upsi,"00000000",8); _zorProccom->options2=0xC0000000; } }
