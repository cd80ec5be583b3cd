#pragma once

#include <string>
#include <vector>

#include "support/containers/LumoContainer.h"

class OrvaSymbol;

// Finds definitions that use themselves: gates through their references to events, parameters
// through their references to parameters. Most walks along definitions need not end on such a ring.
namespace OrvaCycleSearch {

// The symbols of one ring, each referring to the next and the last to the first, and no shorter
// ring going through the first; empty when there is none. Takes a time proportional to the sizes
// of the definitions. The flags of all symbols must be 0, and are so afterwards.
std::vector<OrvaSymbol*> FindCycle(const LumoContainer* symbols);

// "a -> b -> a"; of a long ring, only both its ends.
std::string GetText(const std::vector<OrvaSymbol*>& cycle);

}  // namespace OrvaCycleSearch
