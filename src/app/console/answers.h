// answers.h: what the terminal answers when the engine asks: the agreement, a file that the user changed, the
// progress of a scan.
#pragma once

#include "app/console/options.h"

void console_answers_install(const console_options& options);  // fills in the engine's front
