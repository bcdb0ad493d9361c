/* The peer of minimal_cobol that has its locale and its messages, too, as every such run-time must;
   and, when an argument names it, the library that walks the stack after a crash. */
#include <dlfcn.h>
#include <locale.h>
#include <nl_types.h>
#include <stdlib.h>

int main(int argc, char **argv) {
    setlocale(LC_ALL, "");
    setenv("NLSPATH", CATALOGUE_PATH, 1);
    const nl_catd catalogue = catopen("cobol2run.cat", NL_CAT_LOCALE);
    const void *unwinder = argc > 1 ? dlopen(argv[1], RTLD_NOW | RTLD_GLOBAL) : argv;
    return catalogue == (nl_catd)-1 || unwinder == NULL;
}
