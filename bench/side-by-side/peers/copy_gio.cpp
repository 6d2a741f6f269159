// copy_gio one|many SOURCE DESTINATION: GIO's copy of a file, or of each file of a folder, with its
// reports of progress.
#include "measure.hpp"

#include <gio/gio.h>

static void report(goffset done, goffset all, gpointer percent) {
    *(double*)percent = all ? 100.0 * double(done) / double(all) : 0;
}

int main(int, char** argv) {
    const double begin = now();
    double percent = 0;
    GFile* source = g_file_new_for_path(argv[2]);
    GFile* destination = g_file_new_for_path(argv[3]);
    if (!strcmp(argv[1], "one")) {
        if (!g_file_copy(source, destination, G_FILE_COPY_OVERWRITE, nullptr, report, &percent,
                         nullptr))
            return 3;
        result("copy_ms", (now() - begin) * 1e3);
        return 0;
    }
    long files = 0;
    g_file_make_directory(destination, nullptr, nullptr);
    GFileEnumerator* names = g_file_enumerate_children(source, "standard::name",
                                                       G_FILE_QUERY_INFO_NONE, nullptr, nullptr);
    while (GFileInfo* info = g_file_enumerator_next_file(names, nullptr, nullptr)) {
        GFile* from = g_file_get_child(source, g_file_info_get_name(info));
        GFile* to = g_file_get_child(destination, g_file_info_get_name(info));
        if (!g_file_copy(from, to, G_FILE_COPY_OVERWRITE, nullptr, report, &percent, nullptr))
            return 4;
        g_object_unref(from);
        g_object_unref(to);
        g_object_unref(info);
        files++;
    }
    result("us_per_file", (now() - begin) * 1e6 / double(files));
    result("files", files);
    return 0;
}
