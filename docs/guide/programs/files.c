/* A file from its layout to its verbs:
 *
 *     SELECT ORDERS ASSIGN TO "mqu-orders" FILE STATUS IS ORDERS-STATUS EXTENDED-STATUS.
 *     SELECT OTHER ASSIGN TO "zzz-other".
 *     FD ORDERS. 01 ORDER PIC X(8).
 *     DECLARATIVES. USE AFTER STANDARD ERROR PROCEDURE ON ORDERS, OTHER.
 *
 * The file system that serves it is ../modules/files/zorrfmqueue_32r.c. */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

/* ---- storage: items of the program, and a record with its head of 32 bytes */

static struct {
    char status[2];
    char extended[30];
} working;
static uint8_t *workingAt = (uint8_t *)&working;

static struct {
    FCB *file; /* library */
    uint8_t reserved[28];
    char data[8 + 2];
} orderArea;
static void *orderAt = &orderArea, *otherAt;

/* ---- USE procedures */

static void sayError(int32_t zero, int32_t zeroToo, void *word);

static UseProcedure onOrders = {.routine = sayError, .word = "ORDERS"};
static UseProcedure onOther = {.routine = sayError, .word = "OTHER"};
static UseProcedure *useOrders[USE_ELEMENTS] = {[USE_INPUT] = &onOrders, [USE_FILE] = &onOrders};
static UseProcedure *useOther[USE_ELEMENTS] = {[USE_INPUT] = &onOther};

/* ---- descriptions and blocks, in two parallel arrays */

static FileDescription ordersDescription = {.index = 1,
                                            .fscode = {'?', '?', '?'},
                                            .access = FILE_SEQUENTIAL,
                                            .assign = FILE_LITERAL,
                                            .maxrec = 8,
                                            .minrec = 8,
                                            .filename = "ORDERS",
                                            .assignlen = 10,
                                            .status2len = sizeof working.extended,
                                            .status2offset =
                                                offsetof(__typeof__(working), extended),
                                            .recordptr = &orderAt,
                                            .assignname = "mqu-orders",
                                            .statusbase = &workingAt,
                                            .status2base = &workingAt};
static FileDescription otherDescription = {.index = 2,
                                           .fscode = {'?', '?', '?'},
                                           .access = FILE_SEQUENTIAL,
                                           .assign = FILE_LITERAL,
                                           .filename = "OTHER",
                                           .assignlen = 9,
                                           .recordptr = &otherAt,
                                           .assignname = "zzz-other"};
static FCB orders = {.eyecatcher = {'F', 'C', 'B'}, .level = 1, .usetable = useOrders};
static FCB other = {.eyecatcher = {'F', 'C', 'B'}, .level = 1, .usetable = useOther};

static FileDescription *descriptions[] = {&ordersDescription, &otherDescription};
static FCB *files[] = {&orders, &other};

static IPCB ipcb = {.entry = (void *)sayError, .fcbs = files, .nfcbs = 2};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "FILES",
                  .namelen = 5,
                  .fcbsrc = descriptions,
                  .century = PCB_NO_CENTURY_WINDOW};

/* ---- statements */

static void sayError(int32_t zero, int32_t zeroToo, void *word) {
    (void)zero, (void)zeroToo;
    printf("  USE procedure for %s\n", (const char *)word);
}

static void say(const char *statement) {
    printf("%-24s status %.2s extended %.30s\n", statement, working.status, working.extended);
}

static void openFile(FCB *file, uint16_t mode) {
    file->openmode = mode;
    file->open(file, &ipcb);
}

static void closeFile(FCB *file) {
    file->closemode = 0;
    file->close(file, &ipcb);
}

int main(void) {
    static const char *const numbers[] = {"10000001", "10000002"};
    _zorPgmInit(&pcb);

    openFile(&orders, FCB_OUTPUT);
    say("OPEN OUTPUT ORDERS");
    for (int i = 0; i < 2; i++) {
        memcpy(orders.data, numbers[i], 8);
        orders.verbopts = 0;
        orders.write(&orders, &ipcb);
        say("WRITE ORDER");
    }
    orders.read(&orders, &ipcb);
    say("READ ORDERS");
    closeFile(&orders);
    say("CLOSE ORDERS");

    openFile(&orders, FCB_INPUT);
    orders.verbopts = FCB_AT_END;
    while (orders.read(&orders, &ipcb), orders.status < 10)
        printf("order %.8s\n", orderArea.data);
    say("READ ORDERS AT END");
    closeFile(&orders);
    closeFile(&orders);
    say("CLOSE ORDERS");

    openFile(&orders, FCB_IO);
    say("OPEN I-O ORDERS");
    openFile(&other, FCB_INPUT);
    printf("%-24s status %d\n", "OPEN INPUT OTHER", other.status);

    _zorPgmTerm(&pcb);
    return 0;
}
