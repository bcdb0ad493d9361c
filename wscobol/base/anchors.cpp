// The words by which generated code and every part of the library find the run-time.
#include "base/anchors.h"

Proccom *_zorProccom = nullptr;
char *_zorDebugBuf = nullptr;
uint32_t _zorDebugBufLen = 0;
