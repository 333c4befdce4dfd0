#pragma once

namespace peakbox {

// What gnuplot does with the data of a page, in its language. Sizes are points on A4, as are those of points and lines.

inline constexpr const char* kStart = R"gnuplot(
set terminal pdfcairo size 29.7cm,21cm font 'DejaVu Sans,7' fontscale 0.75 linewidth 0.7
set encoding utf8; set minussign; unset key
blue = '#1c4f9c'; red = '#d00000'; middle = '#606060'; dark = '#202020'
bold = 'DejaVu Sans Bold,7'; small = ',6.5'
step(span) = (p = 10.0 ** floor(log10(span)), span / p > 5 ? 5 * p : span / p > 2 ? 2 * p : p)
colour(isRed) = isRed > 0 ? 0xd00000 : 0x202020
calm = "linecolor rgb dark linewidth 1"
troubled = "linecolor rgb red linewidth 2"
edges = "linecolor rgb '#9a9a9a' linewidth 0.7"
others = "linecolor rgb middle linewidth 0.8"
area = "linecolor rgb middle linewidth 0.9 dashtype (14,10)"
own = "linecolor rgb dark linewidth 1.4"
listed = "point pointtype 2 pointsize 0.5 linecolor rgb red"
found = "point pointtype 7 pointsize 0.22 linecolor rgb dark"
oneSign = "$contours using 1:2 with lines linewidth 0.8 linecolor rgb blue"
bothSigns = "$contours using 1:($3 > 0 ? $2 : NaN) with lines linewidth 0.8 linecolor rgb blue, \
    $contours using 1:($3 < 0 ? $2 : NaN) with lines linewidth 1.1 dashtype (20,6) linecolor rgb '#e5902a'"
bars = "with vectors heads size graph 0.012,90 linewidth 0.9 linecolor rgb dark"
dots = "with points pointtype 7 pointsize 0.35 linecolor rgb variable"
set style textbox opaque noborder margins 0.2,0.1
set border linecolor rgb dark
set tics nomirror out scale 0.5 textcolor rgb dark
)gnuplot";

inline constexpr const char* kPage = R"gnuplot(
unset multiplot; set multiplot; page = page + 1
set label runName at screen 0.02,0.03 noenhanced font small
set label foot at screen 0.5,0.03 center noenhanced font (page > 1 ? small : bold) \
    textcolor rgb (page > 1 ? dark : red)
set label sprintf('page %d of %d', page, pages) at screen 0.98,0.03 right font small
)gnuplot";

inline constexpr const char* kMap = R"gnuplot(
set margins screen 0.055, screen 0.985, screen 0.105, screen 0.95
set tics font ',8' autofreq
set xlabel title1 font ',9'; set ylabel title2 font ',9' offset 0.5,0
set label name at graph 0,1.02 noenhanced font ',9'
set label sprintf('contours from %.3g, each 1.6 times the one before; blue: positive; orange, dashed: negative', base) \
    at graph 1,1.02 right
plot @contours
unset label; unset arrow; unset object; unset xlabel; unset ylabel
)gnuplot";

// What was found of all peaks. What is beyond the range is a triangle at its edge.
inline constexpr const char* kSummary = R"gnuplot(
set margins screen 0.055, screen 0.985, screen 0.105, screen 0.95
set tics font ',8'; set xtics autofreq; set ytics autofreq
set xlabel 'number of the peak' font ',9'; set ylabel ordinate noenhanced font ',9' offset 0.5,0
set label title at graph 0,1.02 noenhanced font ',9'
plot $peaks using 1:($5 == 0 ? $2 - $3 : NaN):(0):(2 * $3):(colour($4)) with vectors heads size graph 0.002,90 \
        linewidth 0.7 linecolor rgb variable, \
    $peaks using 1:($5 == 0 ? $2 : NaN):(colour($4)) with points pointtype 7 pointsize 0.5 linecolor rgb variable, \
    $peaks using 1:($5 > 0 ? $2 : NaN) with points pointtype 9 pointsize 0.5 linecolor rgb red, \
    $peaks using 1:($5 < 0 ? $2 : NaN) with points pointtype 11 pointsize 0.5 linecolor rgb red
unset label; unset xlabel; unset ylabel
)gnuplot";

// The frame and the texts of a cell, which are drawn with its first panel.
inline constexpr const char* kCell = R"gnuplot(
left = 0.02 + slot % 3 * 0.3225; right = left + 0.315; top = 0.972 - slot / 3 * 0.232; bottom = top - 0.226
set object rectangle from screen left,bottom to screen right,top fillstyle empty \
    border linecolor rgb (isTroubled ? red : '#d0d0d0') linewidth (isTroubled ? 2 : 0.7)
set label name at screen left + 0.005,top - 0.014 noenhanced font 'DejaVu Sans Bold,7.5'
set label remark at screen left + 0.005,top - 0.035 noenhanced font bold textcolor rgb red
set label result at screen right - 0.005,top - 0.014 right font (isPoor ? bold : '') textcolor rgb (isPoor ? red : blue)
set label note at screen right - 0.005,top - 0.034 right noenhanced font small
)gnuplot";

// The surroundings of a peak in one of its spectra.
inline constexpr const char* kPanel = R"gnuplot(
width = 0.177 / (panels > 1 ? panels : 2); edge = left + 0.031 + panel * width
set margins screen edge, screen edge + width - 0.0105, screen bottom + 0.025, screen top - 0.062
set xtics font small offset 0,0.6; set ytics font small offset 0.8,0; set format y panel == 0 ? '%g' : ''
set label title at graph 0,1 offset 0,0.55 noenhanced font small textcolor rgb (isShown ? red : dark)
plot @contours
unset object; unset label; set format y '%g'
)gnuplot";

// The intensities, with a fit above what it leaves over. Bars are vectors with flat heads, since yerrorbars leaves a
// gap around each point.
inline constexpr const char* kCurve = R"gnuplot(
tallest = highest > -lowest ? highest : -lowest
exponent = int(floor(log10(tallest))); if (exponent > -2 && exponent < 3) { exponent = 0 }
scale = 10.0 ** exponent
set margins screen left + 0.23, screen right - 0.008, screen bottom + (isFitted ? 0.088 : 0.035), screen top - 0.062
set yrange [1.06 * lowest / scale:1.06 * highest / scale]; set ytics step(tallest / scale)
set format x isFitted ? '' : '%g'; set xlabel isFitted ? '' : abscissa font small offset 0,1.2
set label ordinate.(exponent ? sprintf(' / 10^{%d}', exponent) : '') at graph 0,1 offset 0,0.55 font small
plot $line using 1:($2 / scale) with lines linewidth 1 linecolor rgb (isPoor ? red : blue), \
    $values using 1:(($2 - $3) / scale):(0):($3 > 0 ? 2 * $3 / scale : NaN) @bars, \
    $values using 1:($2 / scale):(colour($5)) @dots
unset label; set xlabel abscissa font small offset 0,1.2; set format x '%g'
if (isFitted) {
    set margins screen left + 0.23, screen right - 0.008, screen bottom + 0.035, screen bottom + 0.078
    if (!hasNoise) { farthest = farthest / scale }
    most = step(farthest); set yrange [-1.2 * farthest:1.2 * farthest]; set ytics -most,most,most
    set xzeroaxis linetype 1 linecolor rgb (isPoor ? red : blue) linewidth 0.7
    plot $values using 1:($4 / $3 - 1):(0):($3 > 0 ? 2 : NaN) @bars, \
        $values using 1:($4 / (hasNoise ? $3 : scale)):(colour($5)) @dots
    unset xzeroaxis
}
unset xlabel
)gnuplot";

}  // namespace peakbox
