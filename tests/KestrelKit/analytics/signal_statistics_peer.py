"""Prints what statsmodels or SciPy make of each line of numbers on standard input.

    adjusted      the p-values of a line, adjusted by Benjamini and Hochberg
    correlated    Spearman's rank correlation of the first half of a line with the second; nan where there is none
"""

import sys
import warnings


def adjusted(numbers):
    from statsmodels.stats.multitest import multipletests

    return multipletests(numbers, method="fdr_bh")[1]


def correlated(numbers):
    from scipy.stats import spearmanr

    half = len(numbers) // 2
    return [spearmanr(numbers[:half], numbers[half:]).statistic]


warnings.simplefilter("ignore")  # of constants
answer = {"adjusted": adjusted, "correlated": correlated}[sys.argv[1]]
for line in sys.stdin:
    print(*(repr(float(figure)) for figure in answer([float(word) for word in line.split()])))
