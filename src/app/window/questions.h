// questions.h: what the install asks the user in windows of its own. Each pumps frames until it has its answer;
// the install stands still meanwhile.
#pragma once

#include <string>

#include "engine/front.h"

int handle_EULA();  // 1 when the user agreed, now or earlier in this run
// A file that the user changed is to be replaced or deleted. A window that goes away is a cancel.
changed_answer select_alert(const std::string& file, bool removing, const std::string& trouble);
