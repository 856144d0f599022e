# SPDX-License-Identifier: AGPL-3.0-or-later
load 'tools/plots/style.gnuplot'
eval(page(560))
set output pictures."/frequencer-steps.png"

set multiplot layout 1,2 margins 0.07,0.985,0.1,0.87 spacing 0.05,0.1
set label 1 "When the ten steps are on" at screen 0.07,0.962 left font ",15" textcolor rgb ink
set yrange [10.6:-0.2]
set xlabel "beats" textcolor rgb ink offset 0,0.4
set style fill solid 1.0 noborder
set grid noytics
unset key
front = 0x167a8c
back = 0x8fc4cc

# A lane per step, filled where the step is on.
set title "over 16 beats: four bars of 4/4"
set ytics ("step 1" 0.5, "2" 1.5, "3" 2.5, "4" 3.5, "5" 4.5, "6" 5.5, "7" 6.5, "8" 7.5, "9" 8.5, "10" 9.5) scale 0
set xrange [0:16]
set xtics 4
plot data."/steps" using 2:($1 - 0.5):2:3:($1 - 0.9):($1 - 0.1):($1 <= 5 ? front : back) with boxxyerror linecolor rgb variable
unset label 1

set title "over 512 beats, where the slowest step comes round once"
set ytics ("" 0.5)
set xrange [0:512]
set xtics 64
plot data."/steps-long" using 2:($1 - 0.5):2:3:($1 - 0.9):($1 - 0.1):($1 <= 5 ? back : front) with boxxyerror linecolor rgb variable
unset multiplot
