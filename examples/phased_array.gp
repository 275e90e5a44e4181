# The pressure of the phased array in the plane y = 0 and on two lines through its focus, from phased_array_xz.dat and
# phased_array_cuts.dat in the working directory.

viridis = "(0 '#440154', 1 '#472d7b', 2 '#3b528b', 3 '#2c728e', 4 '#21918c', 5 '#28ae80', 6 '#5ec962', \
            7 '#addc30', 8 '#fde725')"
png(width, height) = sprintf("set terminal %s size %d, %d enhanced", \
  strstrt(GPVAL_TERMINALS, 'pngcairo') ? "pngcairo font 'sans,13'" : 'png', width, height)
set tics out nomirror

plane = 'phased_array_xz.dat'
cuts = 'phased_array_cuts.dat'
stats plane using 3 nooutput
peak = STATS_max

eval png(1000, 800)
set output 'phased_array_pressure.png'
set title 'Pressure amplitude of the phased array in tissue, plane y = 0'
set size ratio -1
set xlabel 'z, distance from the array (mm)'
set ylabel 'x (mm)'
set cblabel 'pressure amplitude |p| over its peak (dB)' offset 1.5, 0
set cbrange [-40:0]
set autoscale xfix
set autoscale yfix
eval 'set palette defined '.viridis
set contour base
set cntrparam levels discrete peak / 2
unset surface
set table $half
splot plane using 1:2:3
unset table
unset contour
set surface
set key inside bottom right textcolor 'white' samplen 2 spacing 1.3
plot plane using 1:2:(20 * log10($3 / peak)) with image notitle, \
     $half using 1:2 with lines linewidth 1.5 linecolor 'white' title 'half the peak (-6 dB)', \
     cuts index 2 using 1:2 with points pointtype 1 pointsize 1.8 linewidth 2 linecolor 'red' title 'intended focus'

reset
eval png(1000, 500)
set output 'phased_array_cuts.png'
set tics out nomirror
stats cuts index 0 using 2 nooutput
half = STATS_max / 2
set multiplot layout 1, 2 title "Pressure amplitude through the intended focus; dashes: half the largest\n"
set ylabel 'pressure amplitude |p| (kPa)' offset 0.5, 0
set yrange [0:*]
set grid linecolor 'gray85'
set lmargin 9
set rmargin 2
set autoscale xfix
set arrow 1 from graph 0, first half to graph 1, first half nohead dashtype 2
set xlabel 'across the beam, from the focus (mm)'
plot cuts index 0 using 1:2 with lines linewidth 2 linecolor '#31688e' notitle
set xlabel 'along the beam, from the focus (mm)'
plot cuts index 1 using 1:2 with lines linewidth 2 linecolor '#31688e' notitle
unset multiplot
