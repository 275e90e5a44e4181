# Pictures of the validation's tables in the working directory.

png(width, height) = sprintf("set terminal %s size %d, %d enhanced", \
  strstrt(GPVAL_TERMINALS, 'pngcairo') ? "pngcairo font 'sans,12'" : 'png', width, height)
eval png(1100, 560)

# One legend for the plots of a multiplot, in the strip that their margins leave below them.
legend = "unset logscale; unset title; unset xlabel; unset ylabel; unset tics; unset border; unset grid; \
  set lmargin screen 0; set rmargin screen 1; set bmargin screen 0; set tmargin screen 0.1; \
  set xrange [0:1]; set yrange [0:1]; set key center center horizontal"
after_legend = "unset lmargin; unset rmargin; unset bmargin; unset tmargin; set border; set tics nomirror; \
  set grid linecolor 'gray85'; set xtics nomirror autofreq; set ytics nomirror autofreq; set format '%g'; set autoscale; \
  set key inside top right vertical"
set datafile separator ','
set tics nomirror
set grid linecolor 'gray85'
set key samplen 2 spacing 1.2
geometries = "disc annulus rectangle shell 'spherical annulus'"
colours = '#0072b2 #56b4e9 #009e73 #d55e00 #e69f00'
name(i) = word(geometries, i)
colour(i) = word(colours, i)
mine(i) = strcol(1) eq name(i)

# The error against terms and time: full lines the fast nearest method, dashes the Rayleigh sum.
set logscale xy
set format '10^{%T}'
set ylabel 'largest error / largest |p|'
set yrange [1e-14:3]
of(i, method, v) = mine(i) && strcol(2) eq method ? v : NaN
points_in_plane = '320 320 320 280 280'
set output 'convergence.png'
set multiplot layout 1, 2 margins 0.08, 0.98, 0.21, 0.91 spacing 0.1 title \
  "The fast nearest method (full lines) and the library's Rayleigh sum (dashes), lossless"
set xlabel 'terms at a point'
unset key
plot for [i = 1:5] 'convergence.csv' using (of(i, 'fnm_cw', $4)):5 with linespoints pointtype 7 pointsize 0.4 \
       linewidth 1.5 linecolor rgb colour(i), \
     for [i = 1:5] 'convergence.csv' using (of(i, 'rayleigh_cw', $4)):5 with lines dashtype 2 linewidth 1.5 \
       linecolor rgb colour(i)
set xlabel 'time at a point (s)'
plot for [i = 1:5] 'convergence.csv' using (of(i, 'fnm_cw', $6) / word(points_in_plane, i)):5 \
       with linespoints pointtype 7 pointsize 0.4 linewidth 1.5 linecolor rgb colour(i), \
     for [i = 1:5] 'convergence.csv' using (of(i, 'rayleigh_cw', $6) / word(points_in_plane, i)):5 with lines \
       dashtype 2 linewidth 1.5 linecolor rgb colour(i)
eval legend
plot for [i = 1:5] NaN with linespoints pointtype 7 pointsize 0.4 linewidth 1.5 linecolor rgb colour(i) title name(i)
unset multiplot
eval after_legend

# The method alone, against its abscissas.
set output 'abscissas.png'
set logscale xy
set format y '10^{%T}'
set yrange [1e-14:3]
set ylabel 'largest error / largest |p|'
set title 'fnm\_cw: convergence in the number of abscissas, lossless'
set xlabel 'abscissas'
set xrange [2:600]
plot for [i = 1:5] 'convergence.csv' using (of(i, 'fnm_cw', $3)):5 with linespoints pointtype 7 pointsize 0.5 \
  linewidth 1.5 linecolor rgb colour(i) title name(i)
unset logscale
set format '%g'
set autoscale

# On the axis.
eval png(1200, 700)
set output 'axis.png'
set multiplot layout 2, 3 title "On the axis, lossless: fnm\\_cw (points) and closed forms (lines)\n"
set xlabel 'z (mm)'
set ylabel '|p| / (ρ c w)'
set yrange [0:*]
unset key
unset title
modulus(i, re, im) = mine(i) && strcol(2) eq 'lossless' ? sqrt(re**2 + im**2) / 1.5e6 : NaN
do for [i = 1:5] {
  set title name(i)
  # Every point near the face, where the field is finely structured, then every fourth.
  plot 'axis.csv' using ($3 * 1e3):(modulus(i, $6, $7)) with lines linewidth 1.5 linecolor rgb colour(i), \
       'axis.csv' using ($3 * 1e3):($3 < 10e-3 || int($0) % 4 == 0 ? modulus(i, $4, $5) : NaN) with points \
         pointtype 6 pointsize 0.5 linecolor 'black'
}
unset multiplot

# Far-field patterns.
set output 'patterns.png'
set multiplot layout 2, 3 title "At 256 a^2 / wavelength: fnm\\_cw (points) and Fraunhofer patterns (lines)\n"
set logscale y
set yrange [1e-5:1.5]
set format y '10^{%T}'
set xlabel 'angle (degrees)'
set ylabel '|p| / largest |p|'
do for [i = 1:5] {
  set title name(i)
  plot 'patterns.csv' using 2:(mine(i) ? $4 : NaN) with lines linecolor rgb colour(i), \
       'patterns.csv' using 2:(mine(i) ? $3 : NaN) every 2 with points pointtype 6 pointsize 0.5 linecolor 'black'
}
unset multiplot
unset logscale
set format '%g'
set autoscale

# A pulse in time, from its beginning on: four points, each trace over its own largest value.
bodies = "disc annulus shell 'spherical annulus'"
body_colours = '#0072b2 #56b4e9 #d55e00 #e69f00'
body(i) = word(bodies, i)
body_colour(i) = word(body_colours, i)
of_body(i, v) = strcol(1) eq body(i) ? v : NaN
shown(j) = real(word('2 3 5 6', j))
where(i, j) = word("'over the face' 'above the rim' beside ".(i < 3 ? "'beside, low'" : "'near the focus'"), j)
line_of(j) = 2.2 * (4 - j)
trace(i, j, v) = column(2) == shown(j) ? of_body(i, v) : NaN
eval png(1200, 760)
set output 'transients.png'
set multiplot layout 2, 2 title \
  "A Hanning pulse of three cycles: fnm\\_transient (lines), convolution with the impulse response (points)\n"
set xlabel 'time since the beginning of the trace (µs)'
set ylabel 'pressure / its largest'
unset key
do for [i = 1:4] {
  set title body(i)
  array peak[4]
  set autoscale
  unset ytics
  set ytics ()
  do for [j = 1:4] {
    stats 'traces.csv' using (trace(i, j, abs($6))) nooutput
    peak[j] = STATS_max
    set ytics add (where(i, j) line_of(j))
  }
  set xrange [-2:20]
  set yrange [-1.4:8]
  plot for [j = 1:4] 'traces.csv' using (trace(i, j, $4)):($5 / peak[j] + line_of(j)) with lines linewidth 1.5 \
         linecolor rgb body_colour(i), \
       for [j = 1:4] 'traces.csv' using (trace(i, j, $4)):($6 / peak[j] + line_of(j)) every 2 with points \
         pointtype 6 pointsize 0.35 linecolor 'black'
}
unset multiplot
set autoscale
set ytics autofreq

# The rectangle likewise; sampled signals.
eval png(1200, 560)
set output 'rectangle_in_time.png'
set multiplot layout 1, 2 margins 0.12, 0.97, 0.12, 0.88 spacing 0.12 title \
  "Rectangle, 9 x 15 mm: a pulse in time, and what clipping its samples costs"
where_seen(j) = word("'over the face' 'over an edge' 'over a corner' 'beside a corner'", j)
seen(j) = real(word('2 3 5 7', j))
seen_trace(j, v) = strcol(1) eq 'rectangle' && column(2) == seen(j) ? v : NaN
array peak[4]
unset ytics
set ytics ()
set autoscale
do for [j = 1:4] {
  stats 'traces.csv' using (seen_trace(j, abs($6))) nooutput
  peak[j] = STATS_max
  set ytics add (where_seen(j) line_of(j))
}
set title 'fnm\_transient (lines), h convolved (points)'
set ylabel ''
set xrange [-2:22]
set yrange [-1.4:8]
plot for [j = 1:4] 'traces.csv' using (seen_trace(j, $4)):($5 / peak[j] + line_of(j)) with lines linewidth 1.5 \
       linecolor rgb colour(3), \
     for [j = 1:4] 'traces.csv' using (seen_trace(j, $4)):($6 / peak[j] + line_of(j)) every 2 with points \
       pointtype 6 pointsize 0.35 linecolor 'black'
set title 'A sampled ringing pulse; numbers: kept bins'
set xlabel 'clip\_threshold'
set ylabel 'largest error / largest value'
set logscale xy
set format '10^{%T}'
set ytics autofreq
set xrange [5e-7:1]
set yrange [1e-9:10]
set key top left Left reverse
plot 'clipping.csv' using 1:3 with linespoints pointtype 7 pointsize 0.6 linewidth 1.5 linecolor rgb colour(1) \
       title 'the signal', \
     '' using 1:4 with linespoints pointtype 7 pointsize 0.6 linewidth 1.5 linecolor rgb colour(3) \
       title 'the field', \
     '' using 1:($4 / 3):2 with labels notitle
unset multiplot
unset logscale
unset key
set format '%g'
set autoscale
set ytics autofreq

# What it takes.
eval png(1200, 520)
set output 'transient_convergence.png'
set multiplot layout 1, 3 margins 0.07, 0.98, 0.24, 0.84 spacing 0.09 title \
  'A Hanning pulse of three cycles: errors, each trace over its own largest value'
set logscale xy
set format y '10^{%T}'
set ylabel 'error'
unset key
dash_of(i) = 2 - i % 2
quantity(i, q, v) = strcol(2) eq q ? of_body(i, v) : NaN
curve = 'using (quantity(i, q, $3)):4 with linespoints pointtype 7 pointsize 0.4 linewidth 1.5 \
  linecolor rgb body_colour(i) dashtype dash_of(i)'
set title 'fnm\_transient'
set xlabel 'abscissas'
set xrange [5:2000]
q = 'abscissas'
plot for [i = 1:4] 'transient_convergence.csv' @curve
set title 'sum over samples of h'
set xlabel 'step (ns)'
set xrange [0.3:30]
q = 'step_ns'
plot for [i = 1:4] 'transient_convergence.csv' @curve
set title 'rayleigh\_transient'
set xlabel 'cells in either direction'
set xrange [15:500]
set xtics (20, 50, 100, 200, 400)
q = 'cells'
plot for [i = 1:2] 'transients.csv' @curve
eval legend
plot for [i = 1:4] NaN with linespoints pointtype 7 pointsize 0.4 linewidth 1.5 linecolor rgb body_colour(i) \
  dashtype dash_of(i) title body(i)
unset multiplot
eval after_legend

# The published bowl.
eval png(1100, 560)
set output 'bowl_axis.png'
set title 'Bowl in water, on the axis: fnm\_cw and published values'
set xlabel 'z (mm)'
set ylabel '|p| (MPa)'
set yrange [0:1.3]
set key inside top left vertical
$published << END
51.763,0.547205510
61.9315,1.09441102
64,1.07748763
78.011,0.547205510
END
plot 'bowl_axis.csv' using 1:($2 * 1e-6) with lines linewidth 1.5 linecolor rgb colour(1) title 'fnm\_cw', \
     $published using 1:2 with points pointtype 7 linecolor rgb colour(4) title 'published: -6 dB, peak, focus, -6 dB'

set output 'bowl_plane.png'
set title 'Bowl in water, plane y = 0: |p| by fnm\_cw, 241 x 141 points'
set ylabel 'x (mm)'
set cblabel '|p| (MPa)' offset 1, 0
set yrange [*:*]
set tics out nomirror
set size ratio -1
unset grid
unset key
set autoscale xfix
set autoscale yfix
set palette defined (0 '#440154', 1 '#472d7b', 2 '#3b528b', 3 '#2c728e', 4 '#21918c', 5 '#28ae80', 6 '#5ec962', \
                     7 '#addc30', 8 '#fde725')
plot 'bowl_plane.csv' using 1:2:($3 * 1e-6) with image
