#include "foundation/tool_log.h"

#include <syslog.h>

#include <mutex>
#include <set>

#include "foundation/dates.h"
#include "foundation/line_log.h"
#include "foundation/paths.h"

namespace marlet::ToolLog {

namespace {
std::mutex logLock;
}

void noteOnce(const std::filesystem::path& tool) {
    static std::set<std::string> noted;  // guarded by logLock
    const std::lock_guard guard(logLock);
    if (!noted.insert(tool.string()).second) return;
    syslog(LOG_USER | LOG_INFO, "Marlet media tool: %s", tool.c_str());
    appendToLog(Paths::logsDir() / "tools.log",
                Dates::iso8601(Dates::now()) + "  runs " + tool.string());
}

}  // namespace marlet::ToolLog
