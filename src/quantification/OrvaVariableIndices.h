#pragma once

class OrvaMCSManager;
class OrvaSystem;

// Gives the events of the input variables of a system their indices in the store, and loads the
// variables' probabilities there. An event keeps its index across systems. There have to be indices
// left: see OrvaMCSNode::MAXIMUM_INDEX.
void OrvaIndexInputVariables(OrvaSystem* system, OrvaMCSManager* manager);
