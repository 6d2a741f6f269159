// COUNT FOLDER READY: starts so many sleeping processes, makes the file READY and waits. Every
// tenth process is started from one of twenty applications FOLDER/App<k>.app/Contents/MacOS/App<k>,
// the last from FOLDER/Wanted.app. To be run in a process namespace of its own, with which all of
// it ends.
#include "measure.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>
static void mk(const std::string& p) { mkdir(p.c_str(), 0755); }
static std::string make_app(const std::string& dir, const std::string& name, const std::string& id,
                            const char* exe) {
    std::string b = dir + "/" + name + ".app";
    mk(b);
    mk(b + "/Contents");
    mk(b + "/Contents/MacOS");
    std::string x = b + "/Contents/MacOS/" + name;
    if (link(exe, x.c_str()) != 0 && access(x.c_str(), X_OK) != 0)
        exit(3);
    FILE* f = fopen((b + "/Contents/Info.plist").c_str(), "w");
    fprintf(f,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD "
            "PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n<dict>\n"
            "\t<key>CFBundleExecutable</key>\n\t<string>%s</string>\n\t<key>CFBundleIdentifier</"
            "key>\n\t<string>%s</string>\n"
            "\t<key>CFBundleVersion</key>\n\t<string>1.0</string>\n</dict>\n</plist>\n",
            name.c_str(), id.c_str());
    fclose(f);
    return x;
}
int main(int argc, char** argv) {
    if (argc == 1) {
        pause();
        return 0;
    } // a sleeper
    if (argc > 4 && !strcmp(argv[1], "--sleep")) {
        pause();
        return 0;
    }
    int n = atoi(argv[1]);
    std::string dir = argv[2];
    char self[4096];
    ssize_t k = readlink("/proc/self/exe", self, sizeof self - 1);
    if (k < 0)
        return 2;
    self[k] = 0;
    std::string plain = dir + "/plain-helper";
    link(self, plain.c_str());
    std::vector<std::string> apps;
    for (int i = 0; i < 20; i++)
        apps.push_back(
            make_app(dir, "App" + std::to_string(i), "com.example.app" + std::to_string(i), self));
    std::string wanted = make_app(dir, "Wanted", "com.example.wanted", self);
    std::vector<std::string> env;
    for (int i = 0; i < 24; i++)
        env.push_back("VARIABLE_" + std::to_string(i) + "=/some/ordinary/value/of/a/variable/" +
                      std::to_string(i * 7919));
    std::vector<char*> envp;
    for (auto& e : env)
        envp.push_back(e.data());
    envp.push_back(nullptr);
    for (int i = 0; i < n; i++) {
        std::string exe = i == n - 1 ? wanted : i % 10 == 5 ? apps[(i / 10) % 20] : plain;
        std::string num = std::to_string(i);
        char* av[] = {exe.data(), (char*)"--sleep",   (char*)"--name",
                      num.data(), (char*)"--verbose", nullptr};
        pid_t pid;
        if (posix_spawn(&pid, exe.c_str(), nullptr, nullptr, av, envp.data()) != 0)
            return 4;
    }
    usleep(300000);
    close(open(argv[3], O_CREAT | O_WRONLY, 0600));
    pause();
}
