#pragma once
// One intrusive ring for units, events and channels: circular, doubly linked through the records'
// own `prv` and `nxt`, no head; a cursor names the element used last.

namespace lm {

template <class T>
void ring_init(T* n) {
  n->prv = n;
  n->nxt = n;
}

// Inserts n directly after `at`.
template <class T>
void ring_insert_after(T* at, T* n) {
  n->prv = at;
  n->nxt = at->nxt;
  at->nxt->prv = n;
  at->nxt = n;
}

// Takes n out of its ring; returns its predecessor, or null when n was alone.
template <class T>
T* ring_unlink(T* n) {
  if (n->nxt == n) return nullptr;
  T* before = n->prv;
  n->prv->nxt = n->nxt;
  n->nxt->prv = n->prv;
  n->prv = n->nxt = n;
  return before;
}

// Calls f on every element once, from `start` along nxt. f must not unlink elements.
template <class T, class F>
void ring_for_each(T* start, F f) {
  if (!start) return;
  T* p = start;
  do {
    T* next = p->nxt;
    f(p);
    p = next;
  } while (p != start);
}

// Frees every element of the ring that `start` is in (null: nothing), calling f on each first.
template <class T, class F>
void ring_delete_all(T* start, F f) {
  if (!start) return;
  start->prv->nxt = nullptr;  // break the ring, then free along it
  while (start) {
    T* next = start->nxt;
    f(start);
    delete start;
    start = next;
  }
}
template <class T>
void ring_delete_all(T* start) {
  ring_delete_all(start, [](T*) {});
}

}  // namespace lm
