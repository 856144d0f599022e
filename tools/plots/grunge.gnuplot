# SPDX-License-Identifier: AGPL-3.0-or-later
load 'tools/plots/style.gnuplot'
eval(page(500))
set output pictures."/grunge.png"

set multiplot layout 1,2 margins 0.055,0.985,0.12,0.85 spacing 0.05,0.1
set label 1 "Grunge Ladder: the same filter for a quiet and for a loud sound, at 12 dB/oct" at screen 0.055,0.955 left font ",15" textcolor rgb ink
eval(hertzAxis)
set yrange [-60:12]
set ytics 12
set ylabel "dB" textcolor rgb ink offset 1.5,0
set arrow 1 from 1000, graph 0 to 1000, graph 1 nohead linecolor rgb ink dashtype 3

amounts = "60 70"
array colours[2] = [ramp[3], ramp[5]]
set title "Highpass at 1 kHz"
set key top left
plot data."/grunge-hp-0-loud" using 1:2 with lines linecolor rgb ramp[1] linewidth 2 title "0 %, at any level", \
     for [i = 1:2] data."/grunge-hp-".word(amounts, i)."-quiet" using 1:2 with lines linecolor rgb colours[i] linewidth 2 dashtype 2 title word(amounts, i)." %, -36 dBFS", \
     for [i = 1:2] data."/grunge-hp-".word(amounts, i)."-loud" using 1:2 with lines linecolor rgb colours[i] linewidth 2 title word(amounts, i)." %, -6 dBFS"
unset label 1

unset ylabel
set title "Lowpass at 1 kHz"
unset key
plot data."/grunge-lp-0-loud" using 1:2 with lines linecolor rgb ramp[1] linewidth 2, \
     for [i = 1:2] data."/grunge-lp-".word(amounts, i)."-quiet" using 1:2 with lines linecolor rgb colours[i] linewidth 2 dashtype 2, \
     for [i = 1:2] data."/grunge-lp-".word(amounts, i)."-loud" using 1:2 with lines linecolor rgb colours[i] linewidth 2
unset multiplot
