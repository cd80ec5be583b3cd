#pragma once

class OrvaEvent;
class OrvaMCSManager;
class OrvaSystem;

// Gives an event its index in the store, which it keeps across systems. There has to be one left:
// see OrvaMCSNode::MAXIMUM_INDEX.
void OrvaIndexEvent(OrvaEvent* event, OrvaMCSManager* manager);
// The same for the events of the input variables of a system; loads the variables' probabilities
// too.
void OrvaIndexInputVariables(OrvaSystem* system, OrvaMCSManager* manager);
