// The subsystems that want to be told what happens to the run-time. A new one adds its row here,
// below those that it builds on: at an end the rows are told from the first to the last.
#include "run/attachments.h"

#include "dynamic/program_cache.h"
#include "dynamic/run_unit_tables.h"
#include "file/block_setup.h"
#include "file/module_table.h"

namespace zor {
namespace {

constexpr Attachment kRows[] = {
    {.subsystem = "dynamic programs",
     .setUpFiles = nullptr,
     .endRunUnit = forgetNames,
     .endThread = nullptr,
     .endRunTime = endProgramCache},
    {.subsystem = "files",
     .setUpFiles = setUpFiles,
     .endRunUnit = nullptr,
     .endThread = nullptr,
     .endRunTime = closeModules},
};

} // namespace

constinit const std::span<const Attachment> kAttachments = kRows;

} // namespace zor
