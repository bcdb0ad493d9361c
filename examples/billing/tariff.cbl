       IDENTIFICATION DIVISION.
       PROGRAM-ID. TARIFF.
      *> The price of a unit for a class of customers. From the fourth
      *> call on a unit costs 5 cents less.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  CALLS                   PIC S9(9) BINARY VALUE 0.
       LINKAGE SECTION.
       01  CUSTOMER-CLASS          PIC X.
       01  PRICE                   PIC S9(3)V99   COMP-3.

       PROCEDURE DIVISION USING CUSTOMER-CLASS PRICE.
       MAIN-LINE.
           ADD 1 TO CALLS
           EVALUATE CUSTOMER-CLASS
               WHEN "A" MOVE 12.50 TO PRICE
               WHEN "B" MOVE 14.25 TO PRICE
               WHEN OTHER MOVE 9.99 TO PRICE
           END-EVALUATE
           IF CALLS > 3
               SUBTRACT 0.05 FROM PRICE
           END-IF
           EXIT PROGRAM.
       END PROGRAM TARIFF.
