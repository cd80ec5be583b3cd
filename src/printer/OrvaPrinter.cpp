// This is the one source file of the printer that looks upward, for the options.

#include "printer/OrvaPrinter.h"

#include "driver/OrvaInterpreter.h"
#include "model/OrvaEvent.h"
#include "quantification/OrvaHandle.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoStream.h"

OrvaPrinter::OrvaPrinter(OrvaInterpreter* interpreter) : _interpreter(interpreter) {
  LumoMemoryManager::TraceNew(this, "OrvaPrinter");
}

OrvaPrinter::~OrvaPrinter() { LumoMemoryManager::TraceDelete(this, "OrvaPrinter"); }

void OrvaPrinter::UpdateOptionCenter() { _optionCenter = _interpreter->GetOptionCenter(); }

void OrvaPrinter::PrintTopEventProbability(const OrvaEvent* top, const OrvaHandle* handle,
                                           double missionTime, LumoStream* stream) {
  stream->Putln("top-event\tmission-time\tprobability");
  stream->Put(top->GetName());
  stream->Put("\t");
  stream->Put(missionTime);
  stream->Put("\t");
  stream->Putln(handle->GetTopEventProbability());
}
