#pragma once

class OrvaMCSManager;
class OrvaMCSNode;

// A new tree of the minimal cutsets of both trees, which stay as they are, each cutset once; and
// how many of them are not in the first one. A cutset that begins with all events of another one,
// in the order of their indices, is not minimal and is left out. Null when there is no cutset.
OrvaMCSNode* OrvaMergeMCSTrees(OrvaMCSManager* manager, OrvaMCSNode* first, OrvaMCSNode* second,
                               long& numberOfNewCutsets);
