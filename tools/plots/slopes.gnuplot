# SPDX-License-Identifier: AGPL-3.0-or-later
# 'family' is butterworth or ladder, and 'heading' its name.
load 'tools/plots/style.gnuplot'
eval(page(500))
set output pictures."/slopes-".family.".png"

set multiplot layout 1,2 margins 0.055,0.985,0.12,0.85 spacing 0.05,0.1
set label 1 heading at screen 0.055,0.955 left font ",15" textcolor rgb ink
eval(hertzAxis)
set yrange [-72:6]
set ytics 12
set ylabel "dB" textcolor rgb ink offset 1.5,0
set arrow 1 from 1000, graph 0 to 1000, graph 1 nohead linecolor rgb ink dashtype 3

slopes = "6 12 24 48"
set title "Highpass at 1 kHz"
set key bottom right
plot for [i = 1:4] data."/".family."-hp-".word(slopes, i) using 1:2 with lines linecolor rgb ramp[i == 4 ? 5 : i] linewidth 2 title word(slopes, i)." dB/oct"
unset label 1

unset ylabel
set title "Lowpass at 1 kHz"
set key bottom left
plot for [i = 1:4] data."/".family."-lp-".word(slopes, i) using 1:2 with lines linecolor rgb ramp[i == 4 ? 5 : i] linewidth 2 title word(slopes, i)." dB/oct"
unset multiplot
