"""The circadian features with NumPy, for circadian_features_benchmark.

    circadian_features.py FOLDER PEOPLE DAYS

Reads FOLDER/observations, computes the features one person at a time and of all people at once, compares both with
FOLDER/features, and prints the processor time that each took, in milliseconds.
"""

import math
import sys
import time
from pathlib import Path

import numpy as np

HOURS = 24
CIRCLE = 2 * np.pi


def one_person(mid_sleep, asleep, hourly, judged, steps, resting, heart_rate):
    """One sequence of NumPy calls on the arrays of one person."""
    angles = mid_sleep / 1440 * CIRCLE
    sine, cosine = np.sin(angles).sum(), np.cos(angles).sum()
    mean = math.atan2(sine, cosine) / CIRCLE * 1440
    deviation = math.fmod(judged - (mean + 1440 if mean < 0 else mean), 1440)
    if deviation > 720:
        deviation -= 1440
    if deviation <= -720:
        deviation += 1440
    resultant = math.sqrt(sine * sine + cosine * cosine) / len(mid_sleep)
    regularity = 0.0 if resultant >= 1 else math.sqrt(-2 * math.log(resultant)) / CIRCLE * 1440

    rolled = np.stack([np.roll(hourly, -hour) for hour in range(10)])
    tens, fives = rolled.mean(axis=0), rolled[:5].mean(axis=0)
    onset = tens.argmax()
    m10, l5 = tens[onset], fives.min()
    return (deviation / 60, regularity, asleep.std(), onset, m10, l5, hourly.mean(), (m10 - l5) / (m10 + l5),
            steps.std() / steps.mean(), heart_rate - resting.mean(), 1.0, len(mid_sleep))


def all_people(mid_sleep, asleep, hourly, judged, steps, resting, heart_rate):
    """The same over the two-dimensional arrays of all people."""
    angles = mid_sleep / 1440 * CIRCLE
    sine, cosine = np.sin(angles).sum(axis=1), np.cos(angles).sum(axis=1)
    mean = np.arctan2(sine, cosine) / CIRCLE * 1440
    deviation = np.fmod(judged - np.where(mean < 0, mean + 1440, mean), 1440)
    deviation = np.where(deviation > 720, deviation - 1440, deviation)
    deviation = np.where(deviation <= -720, deviation + 1440, deviation)
    resultant = np.sqrt(sine * sine + cosine * cosine) / mid_sleep.shape[1]
    regularity = np.sqrt(-2 * np.log(np.minimum(resultant, 1))) / CIRCLE * 1440

    rolled = np.stack([np.roll(hourly, -hour, axis=1) for hour in range(10)])
    tens, fives = rolled.mean(axis=0), rolled[:5].mean(axis=0)
    onset = tens.argmax(axis=1)
    m10, l5 = tens.max(axis=1), fives.min(axis=1)
    return np.stack([deviation / 60, regularity, asleep.std(axis=1), onset, m10, l5, hourly.mean(axis=1),
                     (m10 - l5) / (m10 + l5), steps.std(axis=1) / steps.mean(axis=1),
                     heart_rate - resting.mean(axis=1), np.ones(len(judged)),
                     np.full(len(judged), mid_sleep.shape[1])], axis=1)


def main(folder, people, days):
    content = (Path(folder) / "observations").read_bytes()
    place = 0

    def take(kind, columns):
        nonlocal place
        numbers = np.frombuffer(content, kind, people * columns, place)
        place += numbers.nbytes
        return numbers.reshape(people, columns) if columns > 1 else numbers

    arrays = (take("f8", days), take("f8", days), take("f8", HOURS), take("f8", 1),
              take("i8", days), take("i8", days), take("i8", 1))
    ours = np.fromfile(Path(folder) / "features").reshape(people, -1)

    def timed(work):
        begin = time.process_time()
        result = work()
        return result, (time.process_time() - begin) * 1e3

    per_person, per_person_time = timed(lambda: [one_person(*person) for person in zip(*arrays)])
    together, together_time = timed(lambda: all_people(*arrays))
    # They sum in another order.
    for theirs in (np.array(per_person), together):
        if not np.allclose(theirs, ours, rtol=1e-9, atol=1e-9):
            sys.exit("the figures differ")
    print(per_person_time, together_time)


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]), int(sys.argv[3]))
