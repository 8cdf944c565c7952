// The commands of zortrace; each returns the exit status.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "options.h"

int show(const Options& options);
int follow(const Options& options);
int listen(const Options& options);
int stats(const Options& options);

// The files that the operands name: a file, a folder's daily files, or the
// daily files of a folder and stem. False when an operand names none; the
// reason has been printed.
bool resolve_paths(const std::vector<std::wstring>& operands, std::vector<std::wstring>& files);

// Reads one file into records, each handed to `take`; false when the file
// could not be read, which has been printed.
bool read_records(const std::wstring& file, const std::function<void(const Record&)>& take);
