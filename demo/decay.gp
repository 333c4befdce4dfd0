# Fits an exponential to the curve of every peak and draws both. Run in the folder of the series: reads rates.txt and
# curves/LABEL, writes fit.txt and decay.png.

set encoding utf8
set terminal pngcairo size 1100,500 font 'DejaVu Sans,9'
set output 'decay.png'
# The uncertainties are those of the data, not scaled to what the fit leaves over.
set fit quiet nolog errorvariables noerrorscaling
set print 'fit.txt'
print "# Label\tKnown(1/s)\tFitted(1/s)\tUncertainty(1/s)"

rate(label) = real(system("awk '$1 == \"".label."\" {print $2}' rates.txt"))
labels = system("awk '!/^#/ {print $1}' rates.txt")
decay(t) = height * exp(-fitted * t)

set xtics 0.1 nomirror
set ytics 3 nomirror
set border 3
unset key
set multiplot layout 2,5 margins 0.05,0.99,0.09,0.94 spacing 0.03,0.13
do for [k = 1:words(labels)] {
    label = word(labels, k)
    file = 'curves/'.label
    known = rate(label)
    stats file using 1:2 nooutput
    height = STATS_max_y
    fitted = 3.0
    fit decay(x) file using 1:2:3 yerrors via height, fitted
    print sprintf("%s\t%g\t%.4f\t%.4f", label, known, fitted, fitted_err)

    set title label font ',11' offset 0,-0.6
    set label 1 sprintf("known %.1f /s", known) at graph 0.98,0.95 right
    set label 2 sprintf("fitted %.2f ± %.2f /s", fitted, fitted_err) at graph 0.98,0.85 right textcolor '#b03020'
    set xlabel (k > 5 ? 'delay (s)' : '') offset 0,0.5
    set ylabel (k % 5 == 1 ? 'intensity (10^5)' : '') offset 1.5,0
    # Error bars as vectors with flat heads, since yerrorbars leaves a gap around each point.
    plot [0:0.28] [0:12] decay(x) / 1e5 with lines linewidth 1.5 linecolor '#b03020', \
         file using 1:(($2 - $3) / 1e5):(0):($3 / 5e4) with vectors heads size 0.006,90 linecolor '#203050', \
         file using 1:($2 / 1e5) with points pointtype 7 pointsize 0.4 linecolor '#203050'
}
unset multiplot
