// file_kind.h: the two kinds of data files of the system, by which a header is written (io_utils.h) and read (xmap.h).
#pragma once

enum { file_binary = 10000, file_text = 10001 };
