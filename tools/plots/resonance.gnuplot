# SPDX-License-Identifier: AGPL-3.0-or-later
load 'tools/plots/style.gnuplot'
eval(page(500))
set output pictures."/resonance.png"

set multiplot layout 1,2 margins 0.055,0.985,0.12,0.85 spacing 0.05,0.1
set label 1 "Butterworth: resonance at 24 dB/oct, for a quiet sound" at screen 0.055,0.955 left font ",15" textcolor rgb ink
eval(hertzAxis)
set yrange [-48:48]
set ytics 12
set ylabel "dB" textcolor rgb ink offset 1.5,0
set arrow 1 from 1000, graph 0 to 1000, graph 1 nohead linecolor rgb ink dashtype 3

amounts = "0 50 65 80 100"
set title "Highpass at 1 kHz"
set key top left
plot for [i = 5:1:-1] data."/resonance-hp-".word(amounts, i) using 1:2 with lines linecolor rgb ramp[i] linewidth 2 title word(amounts, i)." %"
unset label 1

unset ylabel
set title "Lowpass at 1 kHz"
set key top right
plot for [i = 5:1:-1] data."/resonance-lp-".word(amounts, i) using 1:2 with lines linecolor rgb ramp[i] linewidth 2 title word(amounts, i)." %"
unset multiplot
