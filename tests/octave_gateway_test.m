% The module in GNU Octave as the real host: the same checks as in the embedded host, results against plain loops.
% usage: octave-cli octave_gateway_test.m TOOLBOX_DIRECTORY CHECKS_FILE
1;

function s = with(s, field, value)
  s.(field) = value;
end
function s = without(s, field)
  s = rmfield(s, field);
end
function s = none_of(s)
  s = repmat(s, 0, 0);
end
function s = pair(s)
  s(2) = s;
  s(2).density = 7;
end

function T = plain(p, m, dx, dy, dz, sweeps)
  q = (imag(p) .* imag(p) + real(p) .* real(p)) * (m.attenuationdBcmMHz / (m.density * m.soundspeed));
  kappa = m.thermalconductivity;  ax = 1 / (dx * dx);  ay = 1 / (dy * dy);  az = 1 / (dz * dz);
  f = (1.86 * kappa) / (m.bloodperfusion * m.specificheatofblood + (ax + ay + az) * (kappa + kappa));
  T = zeros(size(p));
  for s = 1:sweeps
    for k = 2:size(p, 3) - 1
      for j = 2:size(p, 2) - 1
        for i = 2:size(p, 1) - 1
          Sx = T(i + 1, j, k) + T(i - 1, j, k);  Sy = T(i, j + 1, k) + T(i, j - 1, k);
          Sz = T(i, j, k + 1) + T(i, j, k - 1);
          T(i, j, k) = T(i, j, k) * -0.8600000000000001 + ...
                       f * (Sz * az + (Sy * ay + (Sx * ax + q(i, j, k) * (1 / kappa))));
        end
      end
    end
  end
end

function kilobytes = resident()
  kilobytes = sscanf(fileread('/proc/self/statm'), '%*d %d') * 4;
end

addpath(argv(){1});
medium = struct('soundspeed', 1500, 'density', 1000, 'attenuationdBcmMHz', 5, 'bloodperfusion', 5, ...
                'specificheat', 3600, 'specificheatofblood', 3700, 'thermalconductivity', 0.5, ...
                'nonlinearityparameter', 3.5, 'powerlawexponent', 1.1);
P = complex(reshape(1e5 + (0:119), 4, 5, 6), reshape(3 * (0:119), 4, 5, 6));
flat = complex(ones(4, 5));
none = complex(zeros(0, 3, 3));
good = plain(P, medium, 1e-3, 2e-3, 3e-3, 3);

rows = strsplit(fileread(argv(){2}), "\n");
calls = {};
for row = rows
  line = row{1};
  if isempty(line) || line(1) == '#', continue, end
  if any(strfind(line, 'huge')), disp(['skipped, 34 GB of pressure: ' line]), continue, end
  if any(strfind(line, 'unset')), disp(['skipped, Octave sets every field: ' line]), continue, end
  columns = strtrim(strsplit(line, '|'));
  arguments = strjoin(columns(2:7)(! strcmp(columns(2:7), '-')), ', ');
  outputs = {'', 'T = ', '[T, U] = '}{str2double(columns{1}) + 1};
  calls{end + 1} = ['try, ' outputs 'steady_bioheat(' arguments '); message = "ok"; catch e, message = e.message; end'];
  printed = evalc(calls{end});
  expected = strtrim(do_string_escapes(columns{9}));
  if strncmp(expected, 'host', 4)
    assert(! isempty(message) && ! strcmp(message, 'ok'), line);
  else
    assert(any(strfind(message, expected)), '%s\ngave: %s', line, message);
  end
  assert(printed, do_string_escapes(columns{8}));
  assert(isequal(steady_bioheat(P, medium, 1e-3, 2e-3, 3e-3, 3), good), 'after %s', line);
end

assert(isequaln(steady_bioheat(P, medium, NaN, 2e-3, 3e-3, 2), plain(P, medium, NaN, 2e-3, 3e-3, 2)));
assert(isequaln(steady_bioheat(P, medium, 1e-3, 2e-3, 0, 2), plain(P, medium, 1e-3, 2e-3, 0, 2)));
assert(size(steady_bioheat(none, medium, 1, 1, 1, 1)), [0 3 3]);
big = complex(randn(11, 9, 17), randn(11, 9, 17));
T = steady_bioheat(big, medium, 1e-3, 1e-3, 1e-3, 10.9);
assert(isreal(T) && isequal(T, plain(big, medium, 1e-3, 1e-3, 1e-3, 10)));
assert(isequal(steady_bioheat(2 * big, medium, 1e-3, 1e-3, 1e-3, 10), 4 * T));

help_text = evalc('help steady_bioheat');
for word = {'Pa', 'laplacian', 'kg/(m^3 s)', 'dz must be positive', 'Example'}
  assert(any(strfind(help_text, word{1})), word{1});
end

for round = 1:1100
  if round == 101, before = resident(); end
  for c = 1:numel(calls), evalc(calls{c}); end
  T = steady_bioheat(P, medium, 1e-3, 2e-3, 3e-3, 3);
end
assert(resident() - before < 4096, 'the process grew by %d kB', resident() - before);
printf('%d checks passed in GNU Octave\n', numel(calls));
