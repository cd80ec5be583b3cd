"""One table of all cases, the most frequent first; the workflow runs this and gives `snakemake`."""

COLUMNS = ("case", "sequence", "mission-time", "parameter", "value", "frequency", "ratio", "cutsets",
           "first-share", "first-cutset")


def read(table):
    with open(table) as lines:
        return [line.rstrip("\n").split("\t") for line in lines]


rows = snakemake.params.cases
bases = {}
for row, cutsets, probability in zip(rows, snakemake.input.cutsets, snakemake.input.probabilities):
    row["frequency"] = read(probability)[1][2]
    # A case is compared with the first one of its sequence.
    base = bases.setdefault(row["sequence"], float(row["frequency"]))
    row["ratio"] = "%.4g" % (float(row["frequency"]) / base) if base else "-"
    listed = read(cutsets)
    row["cutsets"] = len(listed)
    row["first-share"] = listed[0][2] if listed else "-"
    row["first-cutset"] = " ".join(listed[0][3:]) if listed else "-"
rows.sort(key=lambda row: -float(row["frequency"]))
with open(snakemake.output[0], "w") as summary:
    print("rank", *COLUMNS, sep="\t", file=summary)
    for rank, row in enumerate(rows, 1):
        print(rank, *(row[column] for column in COLUMNS), sep="\t", file=summary)
