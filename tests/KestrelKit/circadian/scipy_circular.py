"""Prints SciPy's circular mean and standard deviation of each line of clock times, in minutes after midnight."""

import sys

from scipy.stats import circmean, circstd

for line in sys.stdin:
    times = [float(word) for word in line.split()]
    print(repr(float(circmean(times, high=1440, low=0))), repr(float(circstd(times, high=1440, low=0))))
