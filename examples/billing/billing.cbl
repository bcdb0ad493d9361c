       IDENTIFICATION DIVISION.
       PROGRAM-ID. BILLING.
      *> Bills three customers for two months. Prices come from TARIFF,
      *> invoices from INVOICE; both are built apart from this program
      *> and found when they are called. INVOICE numbers its invoices
      *> from 1 in each month: CANCEL takes it back to its initial
      *> values, while TARIFF goes on to know its calls.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  BILLING-TOTALS IS EXTERNAL.
           05  INVOICES            PIC S9(5)      COMP-3.
           05  REVENUE             PIC S9(9)V99   COMP-3.
       01  ORDERS.
           05  FILLER              PIC X(16) VALUE "MILLER    A00120".
           05  FILLER              PIC X(16) VALUE "SMITH     B00035".
           05  FILLER              PIC X(16) VALUE "TAYLOR    C01400".
       01  FILLER REDEFINES ORDERS.
           05  ORDER-LINE OCCURS 3.
               10  CUSTOMER        PIC X(10).
               10  CUSTOMER-CLASS  PIC X.
               10  UNITS           PIC 9(5).
       01  I                       PIC S9(9) BINARY.
       01  PROGRAM-NAME            PIC X(8)  VALUE "INVOICE".
       01  PRICE                   PIC S9(3)V99   COMP-3.
       01  TOTAL-LINE.
           05  T-INVOICES          PIC ZZ9.
           05  FILLER              PIC X(10) VALUE " INVOICES,".
           05  T-REVENUE           PIC $$$,$$9.99.

       PROCEDURE DIVISION.
       MAIN-LINE.
           MOVE 0 TO INVOICES REVENUE
           PERFORM BILL-MONTH 2 TIMES
           CALL "ARCHIVE"
               ON EXCEPTION DISPLAY "ARCHIVE IS NOT INSTALLED"
           END-CALL
           MOVE INVOICES TO T-INVOICES
           MOVE REVENUE TO T-REVENUE
           DISPLAY TOTAL-LINE
           STOP RUN.

       BILL-MONTH.
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > 3
               CALL "TARIFF" USING CUSTOMER-CLASS (I) PRICE
               CALL PROGRAM-NAME USING CUSTOMER (I) UNITS (I) PRICE
           END-PERFORM
           CANCEL PROGRAM-NAME.
       END PROGRAM BILLING.
