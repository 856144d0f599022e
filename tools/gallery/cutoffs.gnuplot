# SPDX-License-Identifier: AGPL-3.0-or-later
# Both cutoffs over time, and the band between them that passes. No words: the page writes them beside it. 'data', 'picture' and
# 'seconds' are given.
set terminal svg size 600,257 background '#ffffff'
set output picture
set margins 0, 0, 0, 0
unset key
unset border
unset tics
set logscale y
set xrange [0:seconds]
set yrange [20:20000]
set for [hertz in "100 1000 10000"] arrow from 0, real(hertz) to seconds, real(hertz) nohead linecolor rgb "#d4d8dc"
set style fill solid 0.18 noborder
plot data using 1:2:3 with filledcurves linecolor rgb "#167a8c", \
     data using 1:2 with lines linecolor rgb "#d9820f" linewidth 2, \
     data using 1:3 with lines linecolor rgb "#167a8c" linewidth 2
