# Draws the first plane as contour lines and on it the boxes that were summed. Run in the folder of the series: reads
# plane-1.txt, pipe.par and report-pipe.txt, writes contour.txt and contour.png.

halfWidth(word) = real(system(sprintf("awk '$1 == \"BOXSIZE\" {print $%d}' pipe.par", word)))
stats 'plane-1.txt' using 1:2 nooutput
rows = STATS_blank
columns = STATS_records / rows
box1 = (halfWidth(2) + 0.5) * (STATS_max_x - STATS_min_x) / (columns - 1)
box2 = (halfWidth(3) + 0.5) * (STATS_max_y - STATS_min_y) / (rows - 1)

set contour base
unset surface
set cntrparam levels discrete 5e3, 8e3, 13e3, 21e3, 34e3, 55e3, 89e3
set table 'contour.txt'
splot 'plane-1.txt'
unset table

set terminal pngcairo size 900,560 font 'DejaVu Sans,10'
set output 'contour.png'
set xrange [9.9:6.6]
set yrange [130.5:104.5]
set xlabel '^{1}H (ppm)'
set ylabel '^{15}N (ppm)'
set tics nomirror out
unset key
# Block 0 of the report is the table of the first spectrum.
plot 'contour.txt' with lines linecolor '#8090b0', \
     'report-pipe.txt' every :::0::0 using 3:4:(box1):(box2) with boxxyerror fill empty linewidth 1.5 linecolor '#b03020', \
     'report-pipe.txt' every :::0::0 using 3:4:2 with labels offset 0,1.6
