# Pressure amplitude and temperature rise in the plane y = 0, from focused_heating_xz.dat in the working directory.

data = 'focused_heating_xz.dat'
viridis = "(0 '#440154', 1 '#472d7b', 2 '#3b528b', 3 '#2c728e', 4 '#21918c', 5 '#28ae80', 6 '#5ec962', \
            7 '#addc30', 8 '#fde725')"
inferno = "(0 '#000004', 1 '#210c4a', 2 '#57106e', 3 '#8a226a', 4 '#bc3754', 5 '#e45a31', 6 '#f98e09', \
            7 '#f9cb35', 8 '#fcffa4')"

if (strstrt(GPVAL_TERMINALS, 'pngcairo')) {
  set terminal pngcairo size 1000, 820 font 'sans,13' enhanced
} else {
  set terminal png size 1000, 820 enhanced
}

set size ratio -1
set xlabel 'z, distance from the apex of the bowl (mm)'
set ylabel 'x (mm)'
set tics out nomirror
set xtics 10
set ytics 10
set mxtics 2
set mytics 2
set autoscale xfix
set autoscale yfix
set bmargin 5
set key inside top right textcolor 'white' samplen 2 spacing 1.3

# Where the column `c` is half its maximum, as a curve; the colours run from zero to the maximum.
find_peak = 'stats data using c nooutput; peak = STATS_max; set cbrange [0:peak]; \
  set contour base; set cntrparam levels discrete peak / 2; unset surface; \
  set table $half; splot data using 1:2:c; unset table; unset contour; set surface'
$focus << END
64 0
END

c = 3
eval find_peak
set output 'focused_heating_pressure.png'
set title "Pressure amplitude of the bowl in water, plane y = 0\n{/*0.8 without attenuation}"
set cblabel 'pressure amplitude |p| (MPa)' offset 1, 0
eval 'set palette defined '.viridis
plot data using 1:2:c with image notitle, \
     $half using 1:2 with lines linewidth 1.5 linecolor 'white' title \
       sprintf('half the peak (-6 dB): %.3f MPa', peak / 2), \
     $focus with points pointtype 1 pointsize 1.5 linewidth 2 linecolor 'red' title 'geometric focus'

c = 4
eval find_peak
set output 'focused_heating_temperature.png'
set title "Steady temperature rise in perfused liver, plane y = 0\n{/*0.8 heated by the field in water, not attenuated on its way: an upper estimate}"
set cblabel 'temperature rise (K)' offset 1, 0
eval 'set palette defined '.inferno
plot data using 1:2:c with image notitle, \
     $half using 1:2 with lines linewidth 1.5 linecolor 'white' title sprintf('half the peak: %.2f K', peak / 2), \
     $focus with points pointtype 1 pointsize 1.5 linewidth 2 linecolor 'dark-cyan' title 'geometric focus'
