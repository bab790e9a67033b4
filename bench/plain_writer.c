/* The plain way to the same text: libmseed decodes every record and each sample is printed with
 * one fprintf. All traces go to one file, in the order of the records.
 * Usage: bench_plain in.mseed out.txt */
#include <libmseed.h>
#include <stdint.h>
#include <stdio.h>

int main(int argc, char **argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: %s in.mseed out.txt\n", argv[0]);
    return 2;
  }
  FILE *out = fopen(argv[2], "wb");
  if (!out) {
    perror(argv[2]);
    return 1;
  }
  MSRecord *msr = NULL;
  int rc;
  while ((rc = ms_readmsr(&msr, argv[1], 0, NULL, NULL, 1, 1, 0)) == MS_NOERROR) {
    const int32_t *s = (const int32_t *)msr->datasamples;
    for (int64_t i = 0; i < msr->numsamples; ++i) fprintf(out, "%ld\r\n", (long)s[i]);
  }
  ms_readmsr(&msr, NULL, 0, NULL, NULL, 0, 0, 0);
  const int write_failed = ferror(out) != 0;
  if (fclose(out) != 0 || write_failed || rc != MS_ENDOFFILE) {
    fprintf(stderr, "%s: %s\n", argv[0], rc != MS_ENDOFFILE ? ms_errorstr(rc) : "write failed");
    return 1;
  }
  return 0;
}
