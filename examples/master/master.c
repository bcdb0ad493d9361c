/* MASTER as a compiler emits it: master.cbl beside this file is its source. */
#include "decimal.h"
#include "decimal_convert.h"
#include "decimal_moves.h"
#include "display.h"
#include "edit.h"
#include "file.h"
#include "pcb.h"

#include <string.h>

#define PACKED(digits) ((digits) / 2 + 1)

enum { kNumber = 5, kName = 20, kBalance = 9 /* 2 decimals */, kAmount = 7 /* the same */ };

/* ---- files: a record area has 32 bytes ahead of its record */

static struct {
    FCB *file;
    char reserved[28];
    char number[kNumber];
    char name[kName];
    uint8_t balance[PACKED(kBalance)];
} customer;

static struct {
    FCB *file;
    char reserved[28];
    char code;
    char number[kNumber];
    char name[kName];
    uint8_t amount[kAmount + 1];
} transaction;

enum { kRecordAt = 32, kCustomerLength = kNumber + kName + PACKED(kBalance) };

static char masterStatus[2];
static char *masterStatusItem = masterStatus;
static void *customerArea = &customer, *transactionArea = &transaction;

/* The keys of a file lie behind its description. */
enum { kByNumber, kByName };
static struct {
    FileDescription file;
    FileKey keys[2];
} master = {
    .file = {.index = 1,
             .fscode = "???",
             .organization = FILE_INDEXED,
             .access = FILE_DYNAMIC,
             .assign = FILE_OPTIONAL | FILE_ENVIRONMENT,
             .maxrec = kCustomerLength,
             .nkeys = 2,
             .filename = "MASTER-FILE",
             .assignlen = 6,
             .keyoffset = sizeof(FileDescription),
             .recordptr = &customerArea,
             .assignname = "MASTER",
             .statusbase = (uint8_t **)&masterStatusItem},
    .keys = {[kByNumber] = {.position = 0, .length = kNumber},
             [kByName] = {.position = kNumber, .attribute = FILE_KEY_DUPLICATES, .length = kName}}};

static FileDescription transactions = {.index = 2,
                                       .fscode = "lsq",
                                       .organization = FILE_LINE_SEQUENTIAL,
                                       .access = FILE_SEQUENTIAL,
                                       .assign = FILE_ENVIRONMENT,
                                       .maxrec = sizeof transaction - kRecordAt,
                                       .filename = "TRANSACTION-FILE",
                                       .assignlen = 12,
                                       .recordptr = &transactionArea,
                                       .assignname = "TRANSACTIONS"};

static FCB masterFile, transactionFile;
static FCB *files[] = {&masterFile, &transactionFile};
static FileDescription *descriptions[] = {&master.file, &transactions};

/* ---- working storage */

static uint8_t amount[PACKED(kBalance)];
static struct {
    char code;
    char filler1[1];
    char number[kNumber];
    char filler2[17];
    char status[2];
} refusal = {.filler1 = " ", .filler2 = " REFUSED, STATUS "};
static struct {
    char number[kNumber];
    char filler1[1];
    char name[kName];
    char balance[15];
} lineOfList = {.filler1 = " "};

static const NumericEditDescriptor editBalance = {15, '.', '$', EDIT_FLOAT_CURRENCY_SIGN_IF_MINUS,
                                                  "$$,$$$,$$9.99CR"};

/* ---- control blocks */

int main(void);

static IPCB ipcb = {.entry = (void *)main, .fcbs = files, .nfcbs = 2};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "MASTER",
                  .namelen = 6,
                  .fcbsrc = descriptions,
                  .century = PCB_NO_CENTURY_WINDOW};

/* ---- the procedure division */

static void display(const void *text, uint32_t length) {
    static const DisplayControl control = {.count = 1, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem item = {.address = text, .size = length, .type = DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

static void openFile(FCB *file, uint16_t mode) {
    file->openmode = mode;
    file->open(file, &ipcb);
}

static void closeFile(FCB *file) {
    file->closemode = 0;
    file->close(file, &ipcb);
}

/* READ file AT END: whether there was a record. */
static int readNext(FCB *file, uint32_t options) {
    file->verbopts = options | FCB_AT_END;
    file->read(file, &ipcb);
    return file->status != 10;
}

static void refuse(void) {
    refusal.code = transaction.code;
    memcpy(refusal.number, transaction.number, kNumber);
    memcpy(refusal.status, masterStatus, sizeof masterStatus);
    display(&refusal, sizeof refusal);
}

/* A verb on MASTER-FILE with INVALID KEY, which is PERFORM REFUSE: whether it went well. */
static int masterVerb(FileOperation verb) {
    masterFile.verbopts = FCB_INVALID_KEY;
    verb(&masterFile, &ipcb);
    if (masterFile.status >= 20 && masterFile.status <= 24)
        refuse();
    return masterFile.status < 10;
}

static void rewriteCustomer(void) {
    masterFile.verbopts = 0;
    masterFile.rewrite(&masterFile, &ipcb);
}

static void takeTransaction(void) {
    memcpy(customer.number, transaction.number, kNumber);
    _zorcBCD_CONV_ZndTS_To_Pckd(transaction.amount, amount, kBalance, kAmount);
    masterFile.keyref = kByNumber;
    switch (transaction.code) {
    case 'A':
        memcpy(customer.name, transaction.name, kName);
        _zorcBCD_Cpy_Pckd(amount, customer.balance, kBalance, kBalance);
        masterVerb(masterFile.write);
        break;
    case 'P':
        if (masterVerb(masterFile.read)) {
            _zorcBCD_ADD_Pckd(amount, customer.balance, customer.balance, kBalance, kBalance,
                              kBalance);
            rewriteCustomer();
        }
        break;
    case 'N':
        if (masterVerb(masterFile.read)) {
            memcpy(customer.name, transaction.name, kName);
            rewriteCustomer();
        }
        break;
    case 'D':
        masterVerb(masterFile.delete_);
        break;
    default:
        break;
    }
}

static void listByName(void) {
    _zorcMoveFigConst(customer.name, kName, "\0", 1);
    masterFile.keyref = kByName;
    masterFile.keylength = 0;
    masterFile.relation = FCB_NOT_LESS;
    masterFile.verbopts = FCB_INVALID_KEY;
    masterFile.start(&masterFile, &ipcb);
    if (masterFile.status >= 20 && masterFile.status <= 24) {
        display("NO CUSTOMERS", 12);
        return;
    }
    while (readNext(&masterFile, FCB_NEXT)) {
        uint8_t stream[1 + kBalance]; /* the digits that editing wants, behind their sign */
        memcpy(lineOfList.number, customer.number, kNumber);
        memcpy(lineOfList.name, customer.name, kName);
        _zorcBCD_CONV_Pckd_To_ZndLS(customer.balance, stream, kBalance, kBalance);
        _zorcMoveNumToNumEdit(&editBalance, stream, lineOfList.balance);
        display(&lineOfList, sizeof lineOfList);
    }
}

int main(void) {
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0) {
        openFile(&masterFile, FCB_IO);
        openFile(&transactionFile, FCB_INPUT);
        while (readNext(&transactionFile, 0))
            takeTransaction();
        closeFile(&transactionFile);
        listByName();
        closeFile(&masterFile);
        _zorRunUnitTerm(0);
    }
    _zorPgmTerm(&pcb);
    return status == 255 ? 0 : status;
}
