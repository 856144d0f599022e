# SPDX-License-Identifier: AGPL-3.0-or-later
# The look of all plots: white ground, dark grey words, thin grid. 'data' and 'pictures' are the folders, given by scripts/docs.

ink = "#303438"
faint = "#d4d8dc"

# One colour for a single curve, five for an ordered series, two for a pair of opposites.
single = "#167a8c"
array ramp[5] = ["#9aa3ab", "#4fb3bf", "#167a8c", "#d9820f", "#b3261e"]
first = "#167a8c"
second = "#d9820f"

set encoding utf8
set border 3 linecolor rgb ink linewidth 1
set tics nomirror out scale 0.6 textcolor rgb ink
set grid linecolor rgb faint linewidth 1 dashtype solid
set key textcolor rgb ink samplen 2 spacing 1.25
set title textcolor rgb ink offset 0,-0.4
set samples 1000

# A frequency axis of three decades.
hertzAxis = 'set logscale x; set xrange [20:20000]; set xlabel "Hz" textcolor rgb ink offset 0,0.4; \
             set xtics ("20" 20, "50" 50, "100" 100, "200" 200, "500" 500, "1k" 1000, "2k" 2000, "5k" 5000, "10k" 10000, "20k" 20000)'

page(height) = sprintf("set terminal pngcairo size 1200,%d font 'Liberation Sans,13' background '#ffffff' linewidth 1.4", height)
