# Horizontal bars, the most frequent case on top, with its ratio to the first case of its sequence.
set datafile separator "\t"
stats table using 7 skip 1 nooutput
low = 10**floor(log10(STATS_min))
set terminal svg size 900,130+22*STATS_records
set output picture
set title "Frequencies of the sequences, by case"
set xlabel "per year; beside the bar the ratio to the first case of the sequence"
set logscale x
set format x "10^{%L}"
set xrange [low:5*STATS_max]
set yrange [-STATS_records+0.4:0.6]
set ytics noenhanced scale 0
set style fill solid 0.7
set grid xtics
unset key
plot table using 7:(-$0):(low):7:(-$0-0.35):(-$0+0.35):ytic(2) skip 1 \
       with boxxyerror linecolor rgb "#4060a0", \
     "" using 7:(-$0):8 skip 1 with labels left offset 0.6,0
