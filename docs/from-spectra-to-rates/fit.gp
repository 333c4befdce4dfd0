# Fits A exp(-R t) to the file of every peak in the folder curves; prints label, rate and uncertainty.
# "noerrorscaling": the uncertainties are those of the data, not scaled to what the fit leaves over.
set fit quiet nolog errorvariables noerrorscaling limit 1e-9
set print '-'
decay(t) = A * exp(-R * t)
labels = system('ls curves')
do for [k = 1:words(labels)] {
    file = 'curves/'.word(labels, k)
    stats file using 1:2 nooutput
    A = STATS_mean_y
    R = 1 / STATS_mean_x
    fit decay(x) file using 1:2:3 yerrors via A, R
    print sprintf("%s\t%.2f\t%.2f", word(labels, k), R, R_err)
}
