// SQLite's view of the files: a database that begins behind the head of its file, and no locks of
// SQLite's own. Those would be lost when any descriptor of the file is closed in this process, and
// an OPEN that looks at the file does just that; the claims and verb locks of the core stand in.
#ifndef ZOR_MODULES_UQE_SHIFTED_VFS_H
#define ZOR_MODULES_UQE_SHIFTED_VFS_H

namespace zor::modules {

// The name under which SQLite knows it; null when it could not be made known.
const char *shiftedVfs();

} // namespace zor::modules

#endif
