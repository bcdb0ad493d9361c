#pragma once
#include "zor_abi.h"
ZOR_BEGIN_C
ZOR_EXPORT int32_t _zor_cpm_create(void);
ZOR_EXPORT void _zor_cpm_destroy(void);
ZOR_END_C
