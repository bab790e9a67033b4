#include "registry/units.hpp"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "base/exit.hpp"
#include "base/ring.hpp"
#include "config/ini.hpp"
#include "log/log_file.hpp"
#include "packet/fields.hpp"
#include "qc/qcc.hpp"
#include "registry/events.hpp"

namespace lm {

namespace {

// Closes the files of the unit that stops being the cursor.
void leave(Run& run, UNIT_T* unit) {
  if (run.set.Log_on) Unit_file_close(run, unit, kLog);
  // Its trace files are closed whatever the log switch, so that many units never exhaust file handles.
  else Evt_close_files(unit->evt, run.N_opn_fls);
  if (run.set.Qcc_on) Unit_file_close(run, unit, kQcc);
}

[[noreturn]] void unit_out_of_heap(std::uint16_t id) {
  char what[32];  // no file name exists yet: the message names the unit
  std::snprintf(what, sizeof what, "unit %04hX", id);
  shut_down(40, what);
}

}  // namespace

UNIT_T* Unit_find(Run& run, const std::uint8_t* packet) {
  std::uint16_t id = hdr::kUnitId.value(packet);
  if (id == 0) id = 0xFFFF;

  UNIT_T* const cursor = run.unit_start;
  if (UNIT_T* u = run.unit_index.find(id)) {
    if (u == cursor) return u;
    leave(run, cursor);
    if (run.set.Log_on && u->log_open != 1) {
      open_file(u->fd_log, u->log_name, run.set.out_root(), packet);
      u->log_open = 1;
    }
    if (run.set.Qcc_on && u->qcc_open != 1) {
      open_file(u->fd_qcc, u->qcc_name, run.set.out_root(), packet);
      u->qcc_open = 1;
    }
    run.unit_start = u;
    return u;
  }

  UNIT_T* u = new (std::nothrow) UNIT_T;
  std::unique_ptr<UNIT_T> unlinked(u);  // freed if the run ends before the unit joins the ring
  if (!u) unit_out_of_heap(id);
  u->unit_id = id;
  u->ini_last = -1;
  Unit_ini(*u, id, run.set.FileIni);
  if (run.set.Log_on) Unit_file_create(run, u, packet, kLog);
  if (run.set.Qcc_on) Unit_file_create(run, u, packet, kQcc);
  if (!run.unit_index.insert(id, u)) unit_out_of_heap(id);
  unlinked.release();
  if (cursor) {
    ring_insert_after(cursor, u);
    leave(run, cursor);
  } else {
    ring_init(u);
  }
  run.unit_start = u;
  return u;
}

void Unit_file_create(Run& run, UNIT_T* unit, const std::uint8_t* packet, int kind) {
  if (kind != kLog && kind != kQcc) return;
  const bool log = kind == kLog;
  char path[sizeof run.set.DirOut + 16];
  const int n = std::snprintf(path, sizeof path, "%sID%04hX%s", run.set.DirOut, unit->unit_id, log ? Fn_ext_log : Fn_ext_qcc);
  char* name = log ? unit->log_name : unit->qcc_name;
  // The name must fit its record field; a longer one could not be re-opened later.
  if (n < 0 || static_cast<std::size_t>(n) >= sizeof unit->log_name) shut_down(20, path);
  std::memcpy(name, path, static_cast<std::size_t>(n) + 1);
  if (log) {
    open_file(unit->fd_log, name, run.set.out_root(), packet);
    unit->log_open = 1;
    Log_fhdr(unit->fd_log, run.set);
  } else {
    open_file(unit->fd_qcc, name, run.set.out_root(), packet);
    unit->qcc_open = 1;
    Qcc_fhdr(unit->fd_qcc, run.set);
  }
}

void Unit_file_close(Run& run, UNIT_T* unit, int kind) {
  if (kind == kLog) {
    if (unit->log_open == 1) {
      unit->fd_log.close();
      unit->log_open = 0;
    }
    if (unit->evt && unit->evt->chn) Evt_close_files(unit->evt, run.N_opn_fls);
  } else if (kind == kQcc) {
    if (unit->qcc_open == 1) {
      unit->fd_qcc.close();
      unit->qcc_open = 0;
    }
  }
}

void open_file(OutFile& file, const char* path, std::size_t root, const std::uint8_t*) {
  if (!file.open(path, root, "a+b")) shut_down(20, path);
}

void Unit_qcc_store(Run& run, UNIT_T* unit, Evt* evt, const std::uint8_t* packet) {
  // At the end of the input every unit's events are written, and only the current unit's file is open.
  const bool reopen = unit->qcc_open != 1;
  if (reopen) {
    open_file(unit->fd_qcc, unit->qcc_name, run.set.out_root(), packet);
    unit->qcc_open = 1;
  }
  Qcc_store(unit, evt, packet, run.FdQcc, run.line);
  if (reopen && unit != run.unit_start) Unit_file_close(run, unit, kQcc);
}

}  // namespace lm
