#include "tools/velmo-session/TerminalSize.h"

#include "core/terminal/AttachWire.h"
#include "platform/sessions/PseudoTerminal.h"

#include <unistd.h>

namespace velmo {

PtyFrame::Size terminalSize() {
    for (const int descriptor : {STDOUT_FILENO, STDIN_FILENO, STDERR_FILENO}) {
        if (const auto size = windowSize(descriptor))
            return PtyAttach::clampSize(size->cols, size->rows);
    }
    return PtyAttach::clampSize(0, 0);
}

} // namespace velmo
