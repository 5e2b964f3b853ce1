# Time against size, from performance.dat, which scripts/bench --write writes. scripts/draw makes the SVG.
set terminal svg size 760,440 font "Helvetica,12" background "white"
set key top left noenhanced
set xlabel "size of the dump, MiB"
set ylabel "wall time, ms"
set xrange [0:*]
set yrange [0:*]
set grid linecolor rgb "#d8dee6"
stats "performance.dat" using 1 nooutput
plot for [program = 0:STATS_blocks-1] "performance.dat" index program using 1:2:3:4 with yerrorlines \
    linewidth 1.5 pointtype 7 pointsize 0.5 title columnheader(1)
