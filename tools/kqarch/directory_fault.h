// Why a directory of archives is of no use, for a hint that names the cause.
#ifndef KQARCH_DIRECTORY_FAULT_H
#define KQARCH_DIRECTORY_FAULT_H

#include <string>

// What to do about a directory that cannot be made or written to. Empty when nothing is seen.
std::string hint_for_directory(const std::string& path);

// What to do about a directory whose file system has too little room for archives.
std::string hint_for_space(const std::string& path);

#endif
