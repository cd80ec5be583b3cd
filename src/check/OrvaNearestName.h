#pragma once

#include <string>
#include <vector>

// Says of a name that is none of those which are read, which of them it probably stands for.
std::string OrvaDescribeNearestName(const char* name, const std::vector<const char*>& names,
                                    const char* textForNone);
