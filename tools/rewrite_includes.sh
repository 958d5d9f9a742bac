#!/usr/bin/env bash
# One-off: the include paths of the layered folders. Usage: tools/rewrite_includes.sh FILES...
sed -i \
  -e 's|"numeric/fortran_io.h"|"io/fortran_io.h"|' \
  -e 's|"readers/line_reader.h"|"io/line_reader.h"|' \
  -e 's|"session/main_log.h"|"io/main_log.h"|' \
  -e 's|"session/words.h"|"io/words.h"|' \
  -e 's|"session/keyword_values.h"|"io/keyword_values.h"|' \
  -e 's|"session/file_names.h"|"io/file_names.h"|' \
  -e 's|"session/session.h"|"model/session.h"|' \
  -e 's|"thermo/thermo_state.h"|"model/thermo_state.h"|' \
  -e 's|"viewer/view_state.h"|"model/view_state.h"|' \
  -e 's|"session/config_file.h"|"readers/config_file.h"|' \
  -e 's|"session/tdi_file.h"|"readers/tdi_file.h"|' \
  -e 's|"readers/force_constants.h"|"thermo/force_constants.h"|' \
  -e 's|"session/command_line.h"|"app/command_line.h"|' \
  -e 's|"session/run.h"|"app/run.h"|' \
  -e 's|"session/report.h"|"app/report.h"|' \
  -e 's|"analysis/vec3_ops.h"|"numeric/vec3.h"|' \
  "$@"
