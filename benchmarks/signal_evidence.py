"""The evidence of signals and their pairs with pandas and SciPy, for signal_evidence_benchmark.

    signal_evidence.py evidence FOLDER DAYS SIGNALS
    signal_evidence.py pairs FOLDER DAYS SIGNALS

Reads FOLDER/values (a row a day, a column a signal, NaN for none), for the evidence FOLDER/states (a number a day)
and FOLDER/names (a line with source and signal for each column) as well, computes the figures, compares them with
FOLDER/figures, and prints what the computation took in milliseconds: by the clock, and of processor time. What it
takes to read files and to make the data frames from them is not counted.
"""

import sys
import time
from pathlib import Path

import numpy as np
import pandas as pd
from scipy.stats import norm
from statsmodels.stats.multitest import multipletests

LAGS = (0, 1, 3, 7)
EUTHYMIA = 4
COMPARISONS = {"depressedVsEuthymia": (5, 6, 7), "elevatedVsEuthymia": (2, 3), "mixedVsEuthymia": (1,),
               "psychosisVsEuthymia": (0,)}
MINIMUM_DAYS = 5


def compare(reference, comparison):
    """Standardized difference, its interval and its p-value."""
    count = len(reference) + len(comparison)
    pooled = np.sqrt((reference.var() * (len(reference) - 1) + comparison.var() * (len(comparison) - 1))
                     / (count - 2))
    difference = (comparison.mean() - reference.mean()) / pooled
    error = np.sqrt(count / (len(reference) * len(comparison)) + difference ** 2 / (2 * (count - 2)))
    return difference, difference - 1.96 * error, difference + 1.96 * error, 2 * norm.sf(abs(difference) / error)


def evidence(observations, labels):
    """One row a signal, comparison and lag."""
    rows = []
    for (source, signal), values in observations.groupby(["source", "signal"]):
        for lag in LAGS:
            states = (values["date"] + pd.Timedelta(days=lag)).map(labels)
            reference = values.loc[states == EUTHYMIA, "value"]
            for name, group in COMPARISONS.items():
                comparison = values.loc[states.isin(group), "value"]
                if min(len(reference), len(comparison)) >= MINIMUM_DAYS:
                    rows.append((source, signal, name, lag, len(reference), len(comparison),
                                 *compare(reference, comparison)))
    table = pd.DataFrame(rows, columns=["source", "signal", "comparison", "lag", "reference days",
                                        "comparison days", "difference", "lower", "upper", "p"])
    table["adjusted p"] = multipletests(table["p"], method="fdr_bh")[1]
    return table.sort_values(["source", "signal", "comparison", "lag"])


def evidence_figures(folder, frame):
    """Has the evidence computed from `frame`; gives its figures, ours, and the times."""
    states = np.fromfile(folder / "states", "i4")
    labels = pd.Series(states, index=frame.index)
    labels = labels[labels >= 0]
    names = [line.split() for line in (folder / "names").read_text().splitlines()]
    frame.columns = pd.MultiIndex.from_tuples(names, names=["source", "signal"])
    observations = frame.rename_axis(index="date").stack(["source", "signal"]).rename("value").reset_index()
    table, times = timed(lambda: evidence(observations, labels))
    ours = np.fromfile(folder / "figures").reshape(len(table), -1)
    figures = table.iloc[:, 4:].to_numpy()
    figures[:, -1] = multipletests(ours[:, -2], method="fdr_bh")[1]  # ours adjusts p-values of four decimals
    return figures, ours, times


def pairs_figures(folder, frame):
    """Has the pairs computed from `frame`; gives their figures, ours, and the times."""
    table, times = timed(lambda: frame.corr(method="spearman"))
    return table.to_numpy()[np.triu_indices(frame.shape[1], 1)], np.fromfile(folder / "figures"), times


def timed(work):
    clock, processor = time.perf_counter(), time.process_time()
    result = work()
    return result, ((time.perf_counter() - clock) * 1e3, (time.process_time() - processor) * 1e3)


def main(task, folder, days, signals):
    values = np.fromfile(folder / "values").reshape(days, signals)
    frame = pd.DataFrame(values, index=pd.date_range("2010-01-01", periods=days))
    theirs, ours, times = {"evidence": evidence_figures, "pairs": pairs_figures}[task](folder, frame)
    # Ours have four decimals, and an approximation of the normal distribution that is right to 7.5e-8.
    if theirs.shape != ours.shape or not np.allclose(theirs, ours, rtol=0, atol=0.6e-4):
        sys.exit("the figures differ")
    print(*times)


if __name__ == "__main__":
    main(sys.argv[1], Path(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4]))
