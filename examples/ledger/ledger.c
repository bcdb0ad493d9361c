/* LEDGER as a compiler emits it: ledger.cbl beside this file is its source. Paragraphs are
 * functions of the same name. */
#include "class_tests.h"
#include "decimal.h"
#include "decimal_convert.h"
#include "decimal_moves.h"
#include "display.h"
#include "edit.h"
#include "file.h"
#include "pcb.h"
#include "search_all.h"
#include "sort.h"

#include <string.h>

#define PACKED(digits) ((digits) / 2 + 1)

enum { kAccount = 6, kDate = 8, kBranch = 4, kOwner = 16, kReason = 18 };
enum { kAmount = 9, kTotal = 13, kRate = 5 }; /* amounts have 2 decimals, rates 4 */

/* ---- files: a record area has 32 bytes ahead of its record */

enum { kRecordAt = 32, kReportLine = 60 };

static struct {
    FCB *file;
    char reserved[28];
    uint8_t account[kAccount];
    uint8_t date[kDate];
    char code;
    uint8_t amount[kAmount + 1];
    char branch[kBranch];
    char owner[kOwner];
} __attribute__((packed)) entry;

static struct {
    FCB *file;
    char reserved[28];
    uint8_t number[kAccount];
    char branch[kBranch];
    char owner[kOwner];
    uint8_t balance[PACKED(kAmount)];
} __attribute__((packed)) account;

static struct {
    FCB *file;
    char reserved[28];
    uint8_t account[kAccount];
    uint8_t date[kDate];
    char code;
    char reason[kReason];
} __attribute__((packed)) refused, refusedList;

static struct {
    FCB *file;
    char reserved[28];
    char line[kReportLine];
} report;

static char fileStatus[2];
static char *fileStatusItem = fileStatus;
static void *entryArea = &entry, *accountArea = &account, *refusedArea = &refused,
            *refusedListArea = &refusedList, *reportArea = &report;

enum { kByNumber, kByBranch };
static struct {
    FileDescription file;
    FileKey keys[2];
} accounts = {
    .file = {.index = 2,
             .fscode = "uqe",
             .organization = FILE_INDEXED,
             .access = FILE_DYNAMIC,
             .assign = FILE_OPTIONAL | FILE_ENVIRONMENT,
             .maxrec = sizeof account - kRecordAt,
             .nkeys = 2,
             .filename = "ACCOUNT-FILE",
             .assignlen = 8,
             .keyoffset = sizeof(FileDescription),
             .recordptr = &accountArea,
             .assignname = "ACCOUNTS",
             .statusbase = (uint8_t **)&fileStatusItem},
    .keys = {
        [kByNumber] = {.position = 0, .length = kAccount},
        [kByBranch] = {.position = kAccount, .attribute = FILE_KEY_DUPLICATES, .length = kBranch}}};

static FileDescription entries = {.index = 1,
                                  .fscode = "???",
                                  .organization = FILE_LINE_SEQUENTIAL,
                                  .access = FILE_SEQUENTIAL,
                                  .assign = FILE_ENVIRONMENT,
                                  .maxrec = sizeof entry - kRecordAt,
                                  .filename = "ENTRY-FILE",
                                  .assignlen = 7,
                                  .recordptr = &entryArea,
                                  .assignname = "ENTRIES",
                                  .statusbase = (uint8_t **)&fileStatusItem};

static FileDescription refusals = {.index = 3,
                                   .fscode = "rsd",
                                   .access = FILE_SEQUENTIAL,
                                   .assign = FILE_ENVIRONMENT,
                                   .maxrec = sizeof refused - kRecordAt,
                                   .filename = "REFUSED-FILE",
                                   .assignlen = 7,
                                   .recordptr = &refusedArea,
                                   .assignname = "REFUSED",
                                   .statusbase = (uint8_t **)&fileStatusItem};

static FileDescription refusalList = {.index = 4,
                                      .fscode = "???",
                                      .organization = FILE_LINE_SEQUENTIAL,
                                      .access = FILE_SEQUENTIAL,
                                      .assign = FILE_ENVIRONMENT,
                                      .maxrec = sizeof refusedList - kRecordAt,
                                      .filename = "REFUSED-LIST",
                                      .assignlen = 8,
                                      .recordptr = &refusedListArea,
                                      .assignname = "REFUSALS",
                                      .statusbase = (uint8_t **)&fileStatusItem};

/* LINAGE IS 14 LINES WITH FOOTING AT 12 LINES AT TOP 1 LINES AT BOTTOM 2. Behind the description
 * lie the four values as names, for the comparison of EXTERNAL files. */
static const int32_t linage[4] = {14, 12, 1, 2};
static struct {
    FileDescription file;
    char linage[4][FILE_NAME_RECORD_BYTES];
} reports = {.file = {.index = 5,
                      .fscode = "???",
                      .organization = FILE_LINE_SEQUENTIAL,
                      .access = FILE_SEQUENTIAL,
                      .assign = FILE_ENVIRONMENT,
                      .maxrec = kReportLine,
                      .filename = "REPORT-FILE",
                      .assignlen = 6,
                      .linageflags = FILE_LINAGE | FILE_FOOTING | FILE_TOP | FILE_BOTTOM,
                      .linageoffset = sizeof(FileDescription),
                      .recordptr = &reportArea,
                      .assignname = "REPORT",
                      .statusbase = (uint8_t **)&fileStatusItem},
             .linage = {"14", "12", "1", "2"}};

static FCB entryFile, accountFile, refusedFile, refusedListFile, reportFile;
static FCB *files[] = {&entryFile, &accountFile, &refusedFile, &refusedListFile, &reportFile};
static FileDescription *descriptions[] = {&entries, &accounts.file, &refusals, &refusalList,
                                          &reports.file};

/* ---- the sort file and working storage */

static struct {
    uint8_t account[kAccount];
    uint8_t date[kDate];
    char code;
    uint8_t amount[PACKED(kAmount)];
    char branch[kBranch];
    char owner[kOwner];
} sorted;

static const struct RateOfBranch {
    char branch[kBranch];
    uint8_t rate[PACKED(kRate)];             /* a month's, of 4 decimals */
} rates[3] = {{"BERN", {0x00, 0x02, 0x5C}},  /* 0.0025 */
              {"KIEL", {0x00, 0x03, 0x1C}},  /* 0.0031 */
              {"OSLO", {0x00, 0x01, 0x7C}}}; /* 0.0017 */

static uint8_t branchTotal[PACKED(kTotal)], grandTotal[PACKED(kTotal)];
static const uint8_t packedZero[] = {0x0C};
static int32_t page;
static char branch[kBranch];
static int16_t sortReturn;

static struct {
    char number[kAccount];
    char filler1[2];
    char owner[kOwner];
    char balance[16];
    char interest[14];
} detail;
static struct {
    char text[8];
    char branch[kBranch];
    char filler[12];
    char total[16];
} total;

static const NumericEditDescriptor editBalance = {14, '.', '$', EDIT_SIGN_IF_MINUS,
                                                  "Z,ZZZ,ZZ9.99CR"};
static const NumericEditDescriptor editInterest = {12, '.', '$', EDIT_FLOAT_SIGN_IF_MINUS,
                                                   "----,--9.99 "};
static const NumericEditDescriptor editTotal = {16, '.', '$', EDIT_FLOAT_CURRENCY_SIGN_IF_MINUS,
                                                "$$,$$$,$$9.99 DB"};
static const NumericEditDescriptor editPage = {3, '.', '$', EDIT_SIGN_NONE, "ZZ9"};

/* ---- control blocks */

int main(void);

static IPCB ipcb = {.entry = (void *)main, .fcbs = files, .nfcbs = 5};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "LEDGER",
                  .namelen = 6,
                  .fcbsrc = descriptions,
                  .century = PCB_NO_CENTURY_WINDOW};

static SortControl sortControl = {.sortreturn = &sortReturn, .checked = 1, .ipcb = &ipcb};
static const RecordDesc sortedRecord = {.length = sizeof sorted};
static const RecordDesc refusedRecord = {.length = sizeof refused - kRecordAt};
static const FileList procedure = {0, 0};

/* ---- code that this compiler emits out of line */

static void display(const char *text, const void *item, uint32_t length) {
    static const DisplayControl control = {.count = 2, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem items[] = {{.address = text, .size = (uint32_t)strlen(text), .type = DISPLAY_TEXT},
                           {.address = item, .size = length, .type = DISPLAY_TEXT}};
    _zorcDisplay(&control, items);
}

static void move(void *receiver, int32_t length, const char *sender, int32_t senderLength) {
    _zorcMoveVarLenOverlap(receiver, length, sender, senderLength);
}

#define MOVE(item, sender) move(item, sizeof(item), sender, sizeof(sender))

static void moveEdited(const uint8_t *packed, int32_t digits, char *receiver,
                       const NumericEditDescriptor *descriptor, int32_t pictureDigits) {
    uint8_t cut[PACKED(kTotal)], stream[1 + kTotal];
    _zorcBCD_Cpy_Pckd(packed, cut, pictureDigits, digits);
    _zorcBCD_CONV_Pckd_To_ZndLS(cut, stream, pictureDigits, pictureDigits);
    _zorcMoveNumToNumEdit(descriptor, stream, receiver);
}

/* ---- the procedure division */

static void stopWith(int32_t returnCode) {
    _zorRunUnitTerm(returnCode);
}

/* Ends the run when the verb has failed otherwise than by AT END and INVALID KEY. */
static void checkStatus(void) {
    if (fileStatus[0] >= '3') {
        display("STATUS ", fileStatus, sizeof fileStatus);
        stopWith(16);
    }
}

static void openFile(FCB *file, uint16_t mode) {
    file->openmode = mode;
    file->open(file, &ipcb);
    checkStatus();
}

static void closeFile(FCB *file) {
    file->closemode = 0;
    file->close(file, &ipcb);
    checkStatus();
}

static void verb(FCB *file, FileOperation operation, uint32_t options) {
    file->verbopts = options;
    operation(file, &ipcb);
    checkStatus();
}

static void refuse(const void *number, const void *date, char code, const char *reason) {
    memcpy(refused.account, number, kAccount);
    memcpy(refused.date, date, kDate);
    refused.code = code;
    move(refused.reason, kReason, reason, (int32_t)strlen(reason));
    verb(&refusedFile, refusedFile.write, 0);
}

/* INPUT PROCEDURE */
static void takeEntries(void) {
    openFile(&entryFile, FCB_INPUT);
    for (;;) {
        verb(&entryFile, entryFile.read, FCB_AT_END | FCB_NEXT);
        if (entryFile.status == 10)
            break;
        if (!_zorcClasZonedDec(CLASS_UNSIGNED, entry.account, kAccount) ||
            !_zorcClasZonedDec(CLASS_UNSIGNED, entry.date, kDate)) {
            refuse(entry.account, entry.date, entry.code, "ACCOUNT OR DATE");
            continue;
        }
        if (!_zorcClasZonedDec(CLASS_TRAILING_SEPARATE | CLASS_TEST_SIGN, entry.amount,
                               kAmount + 1)) {
            refuse(entry.account, entry.date, entry.code, "AMOUNT");
            continue;
        }
        memcpy(sorted.account, entry.account, kAccount);
        memcpy(sorted.date, entry.date, kDate);
        sorted.code = entry.code;
        _zorcBCD_CONV_ZndTS_To_Pckd(entry.amount, sorted.amount, kAmount, kAmount);
        MOVE(sorted.branch, entry.branch);
        MOVE(sorted.owner, entry.owner);
        _zorRelease(sizeof sorted, &sorted, &sortReturn);
    }
    closeFile(&entryFile);
}

static void post(void) {
    uint8_t sum[PACKED(kAmount + 1)], cut[PACKED(kAmount)];
    _zorcBCD_ADD_Pckd(account.balance, sorted.amount, sum, kAmount + 1, kAmount, kAmount);
    _zorcBCD_Cpy_Pckd(sum, cut, kAmount, kAmount + 1);
    if (_zorcBCD_NEQ_Pckd(sum, cut, kAmount, kAmount + 1)) { /* ON SIZE ERROR */
        refuse(sorted.account, sorted.date, sorted.code, "BALANCE TOO LARGE");
        return;
    }
    _zorcBCD_Cpy_Pckd(cut, account.balance, kAmount, kAmount);
    verb(&accountFile, accountFile.rewrite, FCB_INVALID_KEY);
}

static void takeSorted(void) {
    memcpy(account.number, sorted.account, kAccount);
    accountFile.keyref = kByNumber;
    if (sorted.code == 'O') {
        MOVE(account.branch, sorted.branch);
        MOVE(account.owner, sorted.owner);
        _zorcBCD_Cpy_Pckd(sorted.amount, account.balance, kAmount, kAmount);
        verb(&accountFile, accountFile.write, FCB_INVALID_KEY);
        if (accountFile.status == 22)
            refuse(sorted.account, sorted.date, sorted.code, "OPEN ALREADY");
        return;
    }
    verb(&accountFile, accountFile.read, FCB_INVALID_KEY);
    if (accountFile.status == 23)
        refuse(sorted.account, sorted.date, sorted.code, "NO SUCH ACCOUNT");
    else if (sorted.code == 'P')
        post();
    else if (sorted.code != 'C')
        refuse(sorted.account, sorted.date, sorted.code, "CODE");
    else if (!_zorcBCD_NOT_Pckd(account.balance, kAmount))
        refuse(sorted.account, sorted.date, sorted.code, "BALANCE NOT ZERO");
    else
        verb(&accountFile, accountFile.delete_, FCB_INVALID_KEY);
}

/* OUTPUT PROCEDURE */
static void updateAccounts(void) {
    for (;;) {
        uint32_t length;
        int16_t atEnd = 0;
        _zorReturn(&length, &sorted, &atEnd);
        if (atEnd)
            break;
        takeSorted();
    }
}

/* WRITE REPORT-LINE AFTER ADVANCING: 0 lines stands for PAGE. Whether END-OF-PAGE was met. */
static int writeLine(const void *line, int32_t length, int16_t lines) {
    move(report.line, kReportLine, line, length);
    reportFile.advancekind = lines == 0 ? FCB_AFTER_PAGE : FCB_AFTER_LINES;
    reportFile.advance = lines;
    verb(&reportFile, reportFile.write, 0);
    return (reportFile.flags & FCB_END_OF_PAGE) != 0;
}

static void heading(void) {
    static char line[] = "ACCOUNTS BY BRANCH                               PAGE    ";
    uint8_t packed[PACKED(3)];
    page += 1;
    _zorcBCD_CONV_Int4_To_Pckd(page, packed, 3);
    moveEdited(packed, 3, line + sizeof line - 4, &editPage, 3);
    writeLine(line, sizeof line - 1, page == 1 ? 1 : 0);
    writeLine(" ", 1, 1);
}

static void writeTotal(const char *text, const char *name, const uint8_t *amount) {
    move(&total, sizeof total, " ", 1);
    move(total.text, sizeof total.text, text, (int32_t)strlen(text));
    move(total.branch, kBranch, name, kBranch);
    moveEdited(amount, kTotal, total.total, &editTotal, 9);
    writeLine(&total, sizeof total, 2);
}

static void endBranch(void) {
    if (branch[0] == ' ')
        return;
    writeTotal("BRANCH", branch, branchTotal);
    _zorcBCD_ADD_Pckd(grandTotal, branchTotal, grandTotal, kTotal, kTotal, kTotal);
    _zorcBCD_Cpy_Pckd(packedZero, branchTotal, kTotal, 1);
    if (reportFile.linecount >= linage[1]) /* LINAGE-COUNTER */
        heading();
}

/* SEARCH ALL RATE-OF-BRANCH WHEN RATE-BRANCH (R) = ACCOUNT-BRANCH; AT END the rate is zero. */
static const uint8_t *rateOf(const char *wanted) {
    static const struct {
        SearchBlock head;
        SearchKey key;
        int32_t length;
        uint8_t signFlags;
    } block = {{.keyCount = 1, .argumentCount = 1},
               {SEARCH_TEXT | SEARCH_ASCENDING, kBranch, 0},
               kBranch,
               0};
    const SearchArgument argument = {wanted, wanted};
    const int32_t found = _zorcSrchAll(&block.head, rates, 3, sizeof rates[0], &argument, 0, &pcb);
    static const uint8_t none[PACKED(kRate)] = {0x00, 0x00, 0x0C};
    return found < 0 ? none : ((const struct RateOfBranch *)((const char *)rates + found))->rate;
}

static void listAccount(void) {
    uint8_t product[PACKED(kAmount + kRate)], interest[PACKED(kAmount)];
    if (memcmp(branch, account.branch, kBranch) != 0) {
        endBranch();
        MOVE(branch, account.branch);
    }
    /* COMPUTE INTEREST ROUNDED = BALANCE * RATE; ADD INTEREST TO BALANCE */
    _zorcBCD_MPY_Pckd(account.balance, rateOf(account.branch), product, kAmount + kRate, kRate,
                      kAmount);
    _zorcBCD_SHFD_Pckd_RightRnd(product, interest, kAmount, kAmount + kRate, 4);
    _zorcBCD_ADD_Pckd(account.balance, interest, account.balance, kAmount, kAmount, kAmount);
    verb(&accountFile, accountFile.rewrite, FCB_INVALID_KEY);
    _zorcBCD_ADD_Pckd(branchTotal, account.balance, branchTotal, kTotal, kAmount, kTotal);
    move(&detail, sizeof detail, " ", 1);
    memcpy(detail.number, account.number, kAccount);
    MOVE(detail.owner, account.owner);
    moveEdited(account.balance, kAmount, detail.balance, &editBalance, kAmount);
    moveEdited(interest, kAmount, detail.interest, &editInterest, 8);
    if (writeLine(&detail, sizeof detail, 1))
        heading();
}

static void reportAccounts(void) {
    page = 0;
    memcpy(reportFile.linageset, linage, sizeof linage);
    openFile(&reportFile, FCB_OUTPUT);
    heading();
    move(branch, kBranch, " ", 1);
    accountFile.keyref = kByBranch;
    accountFile.keylength = 0;
    accountFile.relation = FCB_NOT_LESS;
    _zorcMoveFigConst(account.branch, kBranch, "\0", 1);
    verb(&accountFile, accountFile.start, FCB_INVALID_KEY);
    if (accountFile.status < 10)
        for (;;) {
            verb(&accountFile, accountFile.read, FCB_AT_END | FCB_NEXT);
            if (accountFile.status == 10)
                break;
            listAccount();
        }
    endBranch();
    writeTotal("ALL", "    ", grandTotal);
    closeFile(&reportFile);
}

static void checkSort(void) {
    if (sortReturn != SORT_GOOD) {
        display("THE SORT HAS FAILED", "", 0);
        stopWith(16);
    }
}

static void sortRefused(void) {
    static FCB *from[] = {&refusedFile}, *to[] = {&refusedListFile};
    static const FileList input = {1, from}, output = {1, to};
    sortReturn = SORT_BAD;
    _zorSortMerge(SORT_FILES, &sortControl, &refusedRecord, 2, "at15+18;at0+14 ", &input, &output,
                  &refusedRecord);
    checkSort();
}

static void procedureDivision(void) {
    _zorcBCD_Cpy_Pckd(packedZero, branchTotal, kTotal, 1);
    _zorcBCD_Cpy_Pckd(packedZero, grandTotal, kTotal, 1);
    openFile(&refusedFile, FCB_OUTPUT);
    openFile(&accountFile, FCB_IO);
    sortReturn = SORT_BAD; /* stays when there is no sort engine */
    _zorSortMerge(SORT_FILES, &sortControl, &sortedRecord, 2, "az0+6;az6+8 ", &procedure,
                  &procedure, &sortedRecord);
    checkSort();
    takeEntries();
    _zorSortMerge(sortReturn == SORT_GOOD ? SORT_INPUT_DONE : SORT_FAILED, &sortControl, 0, 0, 0, 0,
                  0, 0);
    checkSort();
    updateAccounts();
    closeFile(&refusedFile);
    reportAccounts();
    closeFile(&accountFile);
    sortRefused();
    stopWith(0);
}

int main(void) {
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0)
        procedureDivision();
    _zorPgmTerm(&pcb);
    return status == 255 ? 0 : status;
}
