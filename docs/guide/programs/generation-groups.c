/* Names that stand for several files, as OPEN takes them apart: a list with colons, a group, and
 * references to its generations. */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

/* ---- what an operator's "gdgmgr create -L 3 PAY" leaves */

static void createGroup(void) {
    struct {
        char magic[4];
        uint32_t byteorder, version, limit, days, flags, count, last, era, filesystem;
        uint32_t rest[1014];
    } catalogue = {.magic = "GDG\n",
                   .byteorder = 1234,
                   .version = 1,
                   .limit = 3,
                   .flags = 2, /* files of generations that leave are deleted */
                   .filesystem = 1};
    FILE *file = fopen("PAY.catalogue", "wb");
    fwrite(&catalogue, sizeof catalogue, 1, file);
    fclose(file);
}

/* ---- OPEN OUTPUT of a name writes the file, OPEN INPUT reads the files one after the other */

static void openOutput(const char *name, const char *text) {
    int32_t concatenated;
    void *list = _zor_Concat_Check(name, &concatenated, 1, "sys");
    const char *file = list ? _zor_Concat_Next(list) : name;
    FILE *stream = fopen(file, "w");
    fputs(text, stream);
    fclose(stream);
    printf("OPEN OUTPUT %-15s writes %s\n", name, file);
    _zor_Concat_Free(list);
}

static void openInput(const char *name) {
    int32_t concatenated;
    void *list = _zor_Concat_Check(name, &concatenated, 0, "sys");
    const char *file = list ? _zor_Concat_Next(list) : name;
    printf("OPEN INPUT  %-15s reads ", name);
    for (; file; file = list ? _zor_Concat_Next(list) : NULL) {
        char text[20] = "";
        FILE *stream = fopen(file, "r");
        if (stream) {
            if (!fgets(text, sizeof text, stream))
                strcpy(text, "nothing");
            fclose(stream);
        }
        printf(" %s: %s.", file, stream ? text : "not there");
    }
    printf("%s\n", concatenated ? " Concatenated." : "");
    _zor_Concat_Free(list);
}

int main(void) {
    createGroup();
    openInput("PAY");
    openOutput("PAY(+1)", "monday");
    openOutput("PAY(+1)", "tuesday");
    openOutput("PAY(+1)", "wednesday");
    openOutput("PAY(0)", "WEDNESDAY");
    openInput("PAY");
    openInput("PAY(-1)");
    openInput("PAY(1)");
    openInput("PAY.g0001v00");
    openInput("PAY(-3)");
    openOutput("PAY(+1)", "thursday");
    openInput("PAY");
    openInput("PAY(0):PAY(-2)");
    return 0;
}
