"""Writes the study of a case, and the parameter that the case changes.

    write-study.py STUDY PARAMETERS SEQUENCE MISSION-TIME PARAMETER VALUE    PARAMETER: - for none
"""

import sys

STUDY = """<?xml version="1.0"?>
<orva>
  <load><model input="../../model.xml"/></load>
  <!-- What the case changes takes the place of what the model says. -->
  <set><option name="check-parameter-redefinition" value="off"/></set>
  <load><model input="parameters.xml"/></load>
  <set>
    <option name="top-event" value="%s"/>
    <option name="mission-time" value="%s"/>
  </set>
  <build><minimal-cutsets minimum-probability="1e-15"/></build>
  <print><minimal-cutsets output="cutsets.txt"/></print>
  <compute><probability output="probability.txt"/></compute>
</orva>
"""
MODEL = """<?xml version="1.0"?>
<open-psa>%s</open-psa>
"""
PARAMETER = """
  <define-parameter name="%s"><float value="%s"/></define-parameter>
"""

study, parameters, sequence, mission_time, parameter, value = sys.argv[1:]
with open(study, "w") as file:
    file.write(STUDY % (sequence, mission_time))
with open(parameters, "w") as file:
    file.write(MODEL % ("" if parameter == "-" else PARAMETER % (parameter, value)))
