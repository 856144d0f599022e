# SPDX-License-Identifier: AGPL-3.0-or-later
load 'tools/plots/style.gnuplot'
eval(page(760))
set output pictures."/lfo-shapes.png"

array names[6] = ["Sine", "Triangle", "Saw", "Square, which the curve leaves alone", "Random tri", "Brownian"]
array units[6] = ["cycles", "cycles", "cycles", "cycles", "cycles", "minutes"]
array spans[6] = [2, 2, 2, 2, 12, 15]
array steps[6] = [0.5, 0.5, 0.5, 0.5, 2, 3]

set multiplot layout 3,2 margins 0.05,0.985,0.07,0.885 spacing 0.06,0.125
set label 1 "The output of each LFO shape, bent by the curve" at screen 0.05,0.965 left font ",15" textcolor rgb ink
set key at screen 0.985,0.985 right top horizontal
set yrange [-1.15:1.15]
set ytics 1

do for [i = 1:6] {
    set title names[i]
    set xrange [0:spans[i]]
    set xtics steps[i]
    set xlabel units[i] textcolor rgb ink offset 0,0.7
    scale = (i == 6) ? 1.0 / 60 : 1.0
    plot data."/lfos" index (i - 1) using ($1 * scale):2 with lines linecolor rgb ramp[4] linewidth 1.6 notitle, \
         "" index (i - 1) using ($1 * scale):4 with lines linecolor rgb ramp[2] linewidth 1.6 notitle, \
         "" index (i - 1) using ($1 * scale):3 with lines linecolor rgb ink linewidth 1.8 notitle, \
         keyentry with lines linecolor rgb ramp[4] linewidth 1.6 title "curve -100", \
         keyentry with lines linecolor rgb ink linewidth 1.8 title "0", \
         keyentry with lines linecolor rgb ramp[2] linewidth 1.6 title "+100"
    unset label 1
    unset key
}
unset multiplot
