/* A program built against the installed library: analyses its second
 * argument (UTF-8) with the data directory of its first and prints the
 * analysed text, then one line per record. */
#include <stdio.h>
#include <zivor/ZIVOR.h>

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: consumer DATA_DIR TEXT\n");
    return 2;
  }
  if (!ZIVOR_Init(argv[1], 1)) {
    fprintf(stderr, "consumer: cannot initialise from %s\n", argv[1]);
    return 1;
  }
  const char* text = ZIVOR_ParagraphProcess(argv[2], 1);
  int count = 0;
  const result_t* records = ZIVOR_ParagraphProcessA(argv[2], &count, true);
  if (text == NULL || records == NULL) return 1;
  printf("%s\n", text);
  for (int i = 0; i < count; ++i) printf("%d %d %s\n", records[i].start, records[i].length, records[i].sPOS);
  return ZIVOR_Exit() ? 0 : 1;
}
