// TerminalText.h: words of the run's encoding shown in messages in the
// encoding of the terminal (the locale's character set; UTF-8 when the
// locale names plain ASCII), so that a GBK user word reads right on a UTF-8
// terminal. Text that cannot be converted is shown as it is.
#ifndef ZIVOR_TOOLS_ZIVOR_TERMINALTEXT_H_
#define ZIVOR_TOOLS_ZIVOR_TERMINALTEXT_H_

#include <string>

#include "Encoding.h"

// `text` in `encoding`, converted for standard error.
std::string ForTerminal(const std::string& text, const Encoding& encoding);

#endif  // ZIVOR_TOOLS_ZIVOR_TERMINALTEXT_H_
