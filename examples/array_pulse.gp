# The pulse of an array in the plane y = 0 at three times, from array_pulse_*.dat in the working directory.

data = 'array_pulse_plane.dat'
stats data using 3 nooutput
largest = STATS_max > -STATS_min ? STATS_max : -STATS_min
time_of(frame) = real(system(sprintf("grep '^\"' %s | sed -n %dp | tr -d '\"'", data, frame + 1)))
eval sprintf("set terminal %s size 1400, 560 font 'sans,12' enhanced", \
  strstrt(GPVAL_TERMINALS, 'pngcairo') ? 'pngcairo' : 'png')
set output 'array_pulse.png'

# Colours go by the root of the pressure, so that the waves of single elements show.
root(p) = (p < 0 ? -1 : 1) * sqrt(abs(p) / largest)
ticks = ''
do for [part in '-1 -0.5 -0.1 0 0.1 0.5 1'] {
  ticks = ticks.sprintf("%s'%.0f' %g", strlen(ticks) > 0 ? ', ' : '', real(part) * largest, root(real(part) * largest))
}
eval 'set cbtics ('.ticks.')'
set palette defined (-1 '#053061', -0.6 '#4393c3', 0 '#f7f7f7', 0.6 '#d6604d', 1 '#67001f')
set cbrange [-1:1]
set view map
set pm3d interpolate 3, 3
set size ratio -1
set tics out nomirror
set lmargin 0
set rmargin 0
set tmargin 0
set bmargin 0
set xrange [-18:18]
set yrange [0:40]
set xtics 6
set ytics 10
set xlabel 'x (mm)' offset 0, 0.5
$focus << END
30 8
END
set multiplot title "64 elements (bar) fire a sampled pulse at a focus (cross); line: the geometric wavefront of its beginning"
set object 1 rectangle from -9.6, 0 to 9.6, 0.7 front fillcolor 'black' fillstyle solid noborder
do for [frame = 0:2] {
  set origin 0.045 + 0.29 * frame, 0.08
  set size 0.275, 0.79
  set title sprintf('pressure in y = 0 after %.1f µs', time_of(frame)) offset 0, -0.5
  set ylabel frame == 0 ? 'z (mm)' : ''
  if (frame == 2) {
    set colorbox user origin 0.915, 0.12 size 0.018, 0.7
    set cblabel 'pressure (kPa), colours by its root' offset 1, 0
  } else {
    unset colorbox
  }
  unset key
  splot data index frame using 2:1:(root($3)) with pm3d, \
    'array_pulse_front.dat' index frame using 2:1:(0) with lines linewidth 2 linecolor '#009e73', \
    $focus using 2:1:(0) with points pointtype 1 pointsize 1.5 linewidth 1.5 linecolor 'black'
}
unset multiplot
