#include "run/attachments.h"

namespace zor {

Attachments attachments{};

} // namespace zor
