// Messages of functions that compiled programs compute themselves.
#include "base/message_list.h"
#include "mathematics.h"

using namespace zor;

void _Tvq_issue_Mod_ErrMsg(void) {
    message::argumentIsZero("MOD", 0);
}
void _Tvq_issue_Rem_ErrMsg(void) {
    message::argumentIsZero("REM", 0);
}
void _Tvq_char_msg(void) {
    message::charArgument("CHAR", 0);
}
void _Tvq_ord_msg(void) {
    message::ordArgument("ORD", 0);
}
