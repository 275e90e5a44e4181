# The pulse in the plane y = 0 and at the focus, from focused_pulse_*.dat in the working directory.

data = 'focused_pulse_plane.dat'
stats data using 3 nooutput
last = STATS_blocks - 1
full = (STATS_max > -STATS_min ? STATS_max : -STATS_min) / 4  # so that the waves before and behind the focus show
picture(w, h) = sprintf("set terminal %s size %d, %d font 'sans,11' enhanced", \
  strstrt(GPVAL_TERMINALS, 'pngcairo') ? 'pngcairo' : 'png', w, h)
title_of(frame) = sprintf('%.1f us', real(system(sprintf("grep '^\"' %s | sed -n %dp | tr -d '\"'", data, frame + 1))))
draw = "set title title_of(frame) offset 0, -0.5; plot data index frame using 1:2:3 with image notitle"
set object circle at 50, 0 size 0.4 front fillstyle empty border linecolor 'black'  # the focus
set palette defined (-1 '#2166ac', -0.5 '#92c5de', 0 '#f7f7f7', 0.5 '#f4a582', 1 '#b2182b')
set cbrange [-full:full]; set cblabel 'p (kPa)'
set size ratio -1
set autoscale xfix; set autoscale yfix; set tics out nomirror

if (strstrt(GPVAL_TERMINALS, ' gif ')) {
  set terminal gif animate delay 15 loop 0 size 640, 380
  set output 'focused_pulse.gif'
  do for [frame = 0:last] { eval draw }
}
eval picture(1100, 780)
unset colorbox
set output 'focused_pulse.png'
set multiplot layout 3, 3 margins 0.04, 0.98, 0.04, 0.92 spacing 0.04, 0.1 title \
  sprintf('Pressure in the plane y = 0, z across (mm); full colours from a quarter of the largest, %.0f kPa', full)
do for [n = 0:8] { frame = n * last / 8; eval draw }
unset multiplot

eval picture(900, 420)
set output 'focused_pulse_focus.png'
unset object; set size noratio; set title 'Pressure at the focus' offset 0, 0
set xlabel 't (us)'; set ylabel 'p (kPa)'
set offsets 0, 0, graph 0.05, graph 0.05
plot 'focused_pulse_focus.dat' using 1:3 with lines linecolor rgb '#d55e00' title "rho depth v'(t - roc / c)", \
     '' using 1:2 every 50 with points pointtype 6 linecolor 'black' title 'fnm\_tsd'
