// LIST FOLDER: the whole relaunch pass as a desktop script (gjs); FOLDER stands for /Applications.
const { Gio, GLib } = imports.gi;

function contents(path) {
    try {
        return imports.byteArray.toString(GLib.file_get_contents(path)[1]);
    } catch (e) {
        return null;
    }
}

function value(text, key) {
    const match = text && text.match(new RegExp(`<key>${key}</key>\\s*<string>([^<]*)</string>`));
    return match ? match[1] : null;
}

function find(identifier) {
    const entries = Gio.File.new_for_path('/proc').enumerate_children('standard::name', 0, null);
    let info;
    while ((info = entries.next_file(null))) {
        const name = info.get_name();
        if (!/^[0-9]+$/.test(name))
            continue;
        let executable;
        try {
            executable = GLib.file_read_link(`/proc/${name}/exe`);
        } catch (e) {
            continue;
        }
        const match = executable.match(/^(.*)\/Contents\/MacOS\/[^\/]*$/i);
        if (match && GLib.file_test(executable, GLib.FileTest.EXISTS) &&
            value(contents(`${match[1]}/Contents/Info.plist`), 'CFBundleIdentifier') === identifier)
            return parseInt(name);
    }
    return 0;
}

const list = contents(ARGV[0]);
const name = value(list, 'kMainAppName');
find(value(list, 'kCrashReporterID'));
const background = `${ARGV[1]}/${name}/${name}.app/Contents/SharedSupport/${name} Background.app`;
if (!find(value(list, 'kMainAppID'))) {
    find(value(list, 'kBackgroundAppID'));
    GLib.file_test(background, GLib.FileTest.EXISTS);
}
