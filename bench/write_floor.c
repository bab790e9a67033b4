/* The floor of any conversion: the same output bytes, already in memory, written in 64 KiB writes.
 * Reads the given files first, then prints the wall and the processor seconds of the writing alone.
 * Usage: bench_floor out_dir file... */
#define _POSIX_C_SOURCE 200809L
#include <fcntl.h>
#include <libgen.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

enum { kChunk = 64 * 1024 };

struct blob {
  char *data;
  size_t len;
  char name[256];
};

static int load(const char *path, struct blob *b) {
  FILE *f = fopen(path, "rb");
  struct stat st;
  if (!f || fstat(fileno(f), &st) != 0) return -1;
  b->len = (size_t)st.st_size;
  b->data = malloc(b->len ? b->len : 1);
  const int ok = b->data && fread(b->data, 1, b->len, f) == b->len;
  fclose(f);
  char copy[4096];
  snprintf(copy, sizeof copy, "%s", path);
  snprintf(b->name, sizeof b->name, "%s", basename(copy));
  return ok ? 0 : -1;
}

static int store(const char *dir, const struct blob *b) {
  char path[4096];
  snprintf(path, sizeof path, "%s/%s", dir, b->name);
  const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (fd < 0) return -1;
  for (size_t at = 0; at < b->len;) {
    const size_t n = b->len - at < kChunk ? b->len - at : kChunk;
    const ssize_t w = write(fd, b->data + at, n);
    if (w <= 0) return close(fd), -1;
    at += (size_t)w;
  }
  return close(fd);
}

static double seconds(long s, long us) { return (double)s + (double)us / 1e6; }

static double cpu_seconds(const struct rusage *u) {
  return seconds(u->ru_utime.tv_sec + u->ru_stime.tv_sec, u->ru_utime.tv_usec + u->ru_stime.tv_usec);
}

int main(int argc, char **argv) {
  if (argc < 3) {
    fprintf(stderr, "usage: %s out_dir file...\n", argv[0]);
    return 2;
  }
  const int n = argc - 2;
  struct blob *blobs = calloc((size_t)n, sizeof *blobs);
  for (int i = 0; i < n; ++i)
    if (!blobs || load(argv[i + 2], &blobs[i]) != 0) {
      perror(argv[i + 2]);
      return 1;
    }
  struct timespec t0, t1;
  struct rusage u0, u1;
  getrusage(RUSAGE_SELF, &u0);
  clock_gettime(CLOCK_MONOTONIC, &t0);
  for (int i = 0; i < n; ++i)
    if (store(argv[1], &blobs[i]) != 0) {
      perror(blobs[i].name);
      return 1;
    }
  clock_gettime(CLOCK_MONOTONIC, &t1);
  getrusage(RUSAGE_SELF, &u1);
  printf("%.6f %.6f\n", seconds(t1.tv_sec - t0.tv_sec, (t1.tv_nsec - t0.tv_nsec) / 1000),
         cpu_seconds(&u1) - cpu_seconds(&u0));
  return 0;
}
