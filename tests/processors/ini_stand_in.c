// What stands in for the INI parser where there is no package of it: sections, settings and comments, enough
// for the recorded pictures.
#include <stdlib.h>
#include <string.h>

#include <ini.h>

static char *trimmed(char *text) {
    text += strspn(text, " \t");
    char *end = text + strlen(text);
    while (end > text && strchr(" \t\r\n", end[-1]) != NULL)
        --end;
    *end = '\0';
    return text;
}

int ini_parse_stream(ini_reader reader, void *stream, ini_handler handler, void *user) {
    char line[INI_MAX_LINE], section[50] = "";
    int error = 0;
    for (int number = 1; reader(line, INI_MAX_LINE, stream) != NULL; ++number) {
        char *text = trimmed(line), *comment = strstr(text, " ;");
        char *equals = strchr(text, '=');
        if (comment != NULL)
            *comment = '\0';
        if (*text == '[') {
            strncpy(section, text + 1, sizeof section - 1);
            section[strcspn(section, "]")] = '\0';
        } else if (*text != ';' && *text != '#' && *text != '\0' && equals != NULL) {
            *equals = '\0';
            if (handler(user, section, trimmed(text), trimmed(equals + 1)) == 0 && error == 0)
                error = number;
        }
    }
    return error;
}
