// questions.h: what the install asks the user in windows of its own. Each pumps frames until it has its answer;
// the install stands still meanwhile.
#pragma once

#include <string>

int handle_EULA();  // 1 when the user agreed, now or earlier in this run
// A file that the user changed is to be replaced or deleted. Answers as in front.h; a window that goes away is a cancel.
int select_alert(const std::string& file, int removing);
