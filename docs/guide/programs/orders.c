/* ORDERS, a whole program: it reads orders from SYSIN, calls PRICE for each, and prints a report.
 *
 *     01  ORDER-LINE.                              PROGRAM-ID. PRICE.
 *         05  ITEM       PIC X(10).                COMPUTE AMOUNT ROUNDED =
 *         05  QUANTITY   PIC 9(3).                     QUANTITY * UNIT-PRICE
 *         05  UNIT-PRICE PIC 9(5)V99.                      * (100 - DISCOUNT) / 100
 *         05  DISCOUNT   PIC S9(2)V9                   ON SIZE ERROR
 *                        SIGN TRAILING SEPARATE.           MOVE 1 TO TOO-LARGE
 *     77  AMOUNT     PIC S9(5)V99 PACKED-DECIMAL.      NOT ON SIZE ERROR
 *     77  TOTAL      PIC S9(7)V99 PACKED-DECIMAL.          MOVE 0 TO TOO-LARGE
 *     77  TOO-LARGE  PIC S9(4) BINARY.             END-COMPUTE.
 */
#include "lvd4.h"

#include <string.h>

#define PACKED(digits) ((digits) / 2 + 1)

/* ---- PROGRAM-ID. PRICE */

struct OrderLine {
    char item[10];
    uint8_t quantity[3];  /* ZndUS */
    uint8_t unitPrice[7]; /* ZndUS, 2 decimals */
    uint8_t discount[4];  /* ZndTS, 3 digits, 1 decimal */
};

static void price(const struct OrderLine *order, uint8_t *amount, int16_t *tooLarge);

static IPCB priceIpcb = {.entry = (void *)price};
static PCB pricePcb = {.level = {5, 1, 1},
                       .ipcb = &priceIpcb,
                       .name = "PRICE",
                       .namelen = 5,
                       .century = PCB_NO_CENTURY_WINDOW};

static void price(const struct OrderLine *order, uint8_t *amount, int16_t *tooLarge) {
    static const uint8_t hundred[] = {0x01, 0x00, 0x0C}; /* 100.0, 4 digits */
    uint8_t factor[PACKED(5)], unit[PACKED(7)], work[PACKED(31)], cut[PACKED(7)];

    _zorPgmInit(&pricePcb);
    _zorcBCD_CONV_ZndTS_To_Pckd(order->discount, factor, 3, 3);
    _zorcBCD_SUB_Pckd(hundred, factor, factor, 5, 3, 4); /* 1 decimal */
    _zorcBCD_CONV_ZndUS_To_Pckd(order->quantity, work, 31, 3);
    _zorcBCD_CONV_ZndUS_To_Pckd(order->unitPrice, unit, 7, 7);
    _zorcBCD_MPY_Pckd(work, unit, work, 31, 7, 31);     /* 0 + 2 decimals */
    _zorcBCD_MPY_Pckd(work, factor, work, 31, 5, 31);   /* 2 + 1 decimals; / 100 makes them 5 */
    _zorcBCD_SHFD_Pckd_RightRnd(work, work, 31, 31, 3); /* ROUNDED to 2 */
    _zorcBCD_Cpy_Pckd(work, cut, 7, 31);
    *tooLarge = (int16_t)_zorcBCD_NEQ_Pckd(work, cut, 7, 31);
    if (!*tooLarge)
        _zorcBCD_Cpy_Pckd(cut, amount, 7, 7);
    _zorPgmTerm(&pricePcb);
}

/* ---- PROGRAM-ID. ORDERS */

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "ORDERS",
                  .namelen = 6,
                  .century = PCB_NO_CENTURY_WINDOW};

static struct OrderLine order;
static uint8_t amount[PACKED(7)] = {0, 0, 0, 0x0C};
static uint8_t total[PACKED(9)] = {0, 0, 0, 0, 0x0C};
static int16_t tooLarge;
static int32_t returnCode;
static struct {
    char item[10];
    char amount[15];
} reportLine;

static const NumericEditDescriptor editAmount = {15, '.', '$', EDIT_FLOAT_CURRENCY_SIGN_IF_MINUS,
                                                 "$$,$$$,$$9.99CR"}; /* 9 digits */

static void display(const void *text, uint32_t size) {
    static const DisplayControl control = {.count = 1, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem item = {.address = text, .size = size, .type = DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

/* ACCEPT ORDER-LINE; 0 at the end of the file. */
static int acceptOrder(void) {
    _zorcMoveFigConst(&order, sizeof order, "\xFF", 1);
    _zorcAccept(ACCEPT_FROM_SYSIN, sizeof order, &order);
    return order.item[0] != '\xFF';
}

static int isNumeric(const uint8_t *digits, int count) {
    for (int i = 0; i < count; i++)
        if (digits[i] < '0' || digits[i] > '9')
            return 0;
    return 1;
}

/* MOVE item-of-2-decimals TO the edited item of the line. */
static void editMoney(const uint8_t *packed, int32_t digits) {
    uint8_t stream[1 + 9];
    _zorcBCD_CONV_Pckd_To_ZndLS(packed, stream, 9, digits);
    _zorcMoveNumToNumEdit(&editAmount, stream, reportLine.amount);
}

static void moveText(const char *text) {
    _zorcMoveVarLenOverlap(reportLine.amount, sizeof reportLine.amount, text,
                           (int32_t)strlen(text));
}

static void printOrder(void) {
    memcpy(reportLine.item, order.item, sizeof order.item);
    if (!isNumeric(order.quantity, 3) || !isNumeric(order.unitPrice, 7)) {
        moveText("NOT NUMERIC");
        returnCode = 4;
    } else {
        price(&order, amount, &tooLarge); /* CALL "PRICE" USING ORDER-LINE AMOUNT TOO-LARGE */
        if (tooLarge) {
            moveText("TOO LARGE");
            returnCode = 4;
        } else {
            editMoney(amount, 7);
            _zorcBCD_ADD_Pckd(amount, total, total, 9, 9, 7); /* ADD AMOUNT TO TOTAL */
        }
    }
    display(&reportLine, sizeof reportLine);
}

static void procedureDivision(void) {
    while (acceptOrder())
        printOrder();
    _zorcMoveVarLenOverlap(reportLine.item, sizeof reportLine.item, "TOTAL", 5);
    editMoney(total, 9);
    display(&reportLine, sizeof reportLine);
    _zorRunUnitTerm(returnCode); /* STOP RUN */
}

int main(void) {
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0)
        procedureDivision();
    _zorPgmTerm(&pcb);
    return status == 255 ? 0 : status;
}
