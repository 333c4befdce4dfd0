# Fits A exp(-R t) to the file of every peak in the folder curves; prints label, rate and uncertainty.
import os

import numpy
from scipy.optimize import curve_fit


def decay(t, a, r):
    return a * numpy.exp(-r * t)


for label in sorted(os.listdir("curves")):
    t, intensity, uncertainty = numpy.loadtxt(f"curves/{label}", unpack=True)
    guess = intensity.mean(), 1 / t.mean()
    # absolute_sigma: the uncertainties are those of the data, not scaled to what the fit leaves over.
    values, covariance = curve_fit(decay, t, intensity, guess, uncertainty, absolute_sigma=True)
    print(f"{label}\t{values[1]:.2f}\t{numpy.sqrt(covariance[1, 1]):.2f}")
