#include "cpm.h"
#include "proccom.h"
int32_t _zor_cpm_create(void) { return 0; }
void _zor_cpm_destroy(void) {}
