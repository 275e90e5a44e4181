# The pulse in the plane y = 0 and at the focus, from focused_pulse_*.dat in the working directory.

data = 'focused_pulse_plane.dat'
stats data using 3 nooutput
last = STATS_blocks - 1
largest = STATS_max > -STATS_min ? STATS_max : -STATS_min
picture(w, h) = sprintf("set terminal %s size %d, %d font 'sans,12' enhanced", \
  strstrt(GPVAL_TERMINALS, 'pngcairo') ? 'pngcairo' : 'png', w, h)
time_of(frame) = real(system(sprintf("grep '^\"' %s | sed -n %dp | tr -d '\"'", data, frame + 1)))

# Colours go by the root of the pressure, so that weak waves show and the strongest are not cut off.
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
unset key
$focus << END
50 0
END
draw = "splot data index frame using 1:2:(root($3)) with pm3d, $focus using 1:2:(0) with points pointtype 1 \
  pointsize 1.2 linewidth 1.5 linecolor 'black'"

if (strstrt(GPVAL_TERMINALS, ' gif ')) {
  set terminal gif animate delay 15 loop 0 size 720, 460
  set output 'focused_pulse.gif'
  set xrange [30:70]
  set yrange [-12:12]
  set xlabel 'z (mm)'
  set ylabel 'x (mm)'
  set cblabel 'pressure (kPa)' offset 1, 0
  do for [frame = 0:last] {
    set title sprintf('Pressure in the plane y = 0 after %.1f us; cross: focus', time_of(frame))
    eval draw
  }
}

# Six moments, each panel about the pulse's middle, which passes the focus in the middle frame.
eval picture(1100, 780)
set output 'focused_pulse.png'
set multiplot title 'A pulse of three cycles passing the focus of a bowl (cross): pressure in the plane y = 0'
set xrange [*:*] noextend
set yrange [-8:8]
set xtics 4
set ytics 4
set lmargin 0
set rmargin 0
set tmargin 0
set bmargin 0
do for [n = 0:5] {
  frame = last / 2 + int(word('-8 -5 -2 0 3 6', n + 1))
  middle = 50 + 1.5 * (frame - last / 2)
  set xrange [middle - 8:middle + 8]
  set origin 0.055 + 0.275 * (n % 3), n < 3 ? 0.54 : 0.07
  set size 0.25, 0.38
  set title sprintf('%.1f µs', time_of(frame)) offset 0, -0.5
  set xlabel n < 3 ? '' : 'z (mm)'
  set ylabel n % 3 == 0 ? 'x (mm)' : ''
  if (n == 5) {
    set colorbox user origin 0.875, 0.1 size 0.02, 0.8
    set cblabel 'pressure (kPa), colours by its root' offset 1, 0
  } else {
    unset colorbox
  }
  eval draw
}
unset multiplot

reset
eval picture(900, 480)
set output 'focused_pulse_focus.png'
set tics out nomirror
set grid linecolor 'gray85'
set title 'Pressure at the focus'
set xlabel 'time (µs)'
set ylabel 'pressure (kPa)'
set key top left
set offsets 0, 0, graph 0.25, graph 0.05
plot 'focused_pulse_focus.dat' using 1:3 with lines linewidth 1.5 linecolor rgb '#d55e00' \
       title "ρ depth v'(t - roc / c)", \
     '' using 1:2 every 50 with points pointtype 6 linecolor 'black' title 'fnm\_tsd'
