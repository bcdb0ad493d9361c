/* The peer of minimal_cobol that has its locale and its messages, too, as every such run-time must.
 */
#include <locale.h>
#include <nl_types.h>
#include <stdlib.h>

int main(void) {
    setlocale(LC_ALL, "");
    setenv("NLSPATH", CATALOGUE_PATH, 1);
    return catopen("cobol2run.cat", NL_CAT_LOCALE) == (nl_catd)-1;
}
