       IDENTIFICATION DIVISION.
       PROGRAM-ID. INVOICE.
      *> Shows an invoice and adds it to the totals that all programs of
      *> the run unit share.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  BILLING-TOTALS IS EXTERNAL.
           05  INVOICES            PIC S9(5)      COMP-3.
           05  REVENUE             PIC S9(9)V99   COMP-3.
       01  INVOICE-NUMBER          PIC S9(5)      COMP-3 VALUE 0.
       01  AMOUNT                  PIC S9(9)V99   COMP-3.
       01  INVOICE-LINE.
           05  L-NUMBER            PIC ZZ9.
           05  FILLER              PIC X     VALUE SPACE.
           05  L-CUSTOMER          PIC X(10).
           05  L-AMOUNT            PIC ZZZ,ZZ9.99.
       LINKAGE SECTION.
       01  CUSTOMER                PIC X(10).
       01  UNITS                   PIC 9(5).
       01  PRICE                   PIC S9(3)V99   COMP-3.

       PROCEDURE DIVISION USING CUSTOMER UNITS PRICE.
       MAIN-LINE.
           ADD 1 TO INVOICE-NUMBER INVOICES
           MULTIPLY UNITS BY PRICE GIVING AMOUNT
           ADD AMOUNT TO REVENUE
           MOVE INVOICE-NUMBER TO L-NUMBER
           MOVE CUSTOMER TO L-CUSTOMER
           MOVE AMOUNT TO L-AMOUNT
           DISPLAY INVOICE-LINE
           EXIT PROGRAM.
       END PROGRAM INVOICE.
