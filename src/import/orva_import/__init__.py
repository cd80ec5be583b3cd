"""The converter behind orva-import.

The road of a model: document (XML to definitions) -> model (names and scopes) -> boolean (one
graph of flat operators) and eventtrees (sequences, on the same graph) and expressions -> writer.
Formulas and expressions are postfix sequences, so that nothing recurses on the depth of the input.
"""
