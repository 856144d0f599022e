# SPDX-License-Identifier: AGPL-3.0-or-later
load 'tools/plots/style.gnuplot'
eval(page(620))
set output pictures."/frequencer-pattern.png"

set multiplot
set label 1 "Four steps make a pattern: lowpass knobs at +28, -16, +22 and -12, cutoff at 500 Hz" at screen 0.09,0.955 left font ",15" textcolor rgb ink
set lmargin at screen 0.09
set rmargin at screen 0.985
set xrange [0:16]
set xtics 1
unset key

set tmargin at screen 0.89
set bmargin at screen 0.60
set style fill solid 1.0 noborder
set yrange [4.05:-0.1]
set ytics ("step 1   +28" 0.5, "2   -16" 1.5, "3   +22" 2.5, "4   -12" 3.5) scale 0
set format x ""
set grid noytics
plot data."/steps" using 2:($1 - 0.5):2:3:($1 - 0.9):($1 - 0.1):(int($1) % 2 ? 0x167a8c : 0xd9820f) with boxxyerror linecolor rgb variable
unset label 1

set tmargin at screen 0.55
set bmargin at screen 0.11
set grid ytics
set yrange [200:6000]
set logscale y
set yrange [200:6000]
set ytics ("250 Hz" 250, "500 Hz" 500, "1 kHz" 1000, "2 kHz" 2000, "4 kHz" 4000) scale 0.6
set format x "%g"
set xlabel "beats" textcolor rgb ink offset 0,0.4
plot 500 with lines linecolor rgb ink linewidth 1 dashtype 3, \
     data."/pattern" using 1:3 with steps linecolor rgb single linewidth 2.2
unset multiplot
