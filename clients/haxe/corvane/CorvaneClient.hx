package corvane;

/**
  The Corvane server's commands as methods: one per command, with the command's name.

  Each returns at once and calls `done` exactly once with what the command came to: later, or
  at once when a parameter holds what a request cannot carry (Failure.UNSENDABLE). The
  commands are carried out one at a time in the order of the calls. The connection is made by the
  first call, and made again by the next call after it was lost.

  Paths may use "/" or "\". They are the server's: relative ones start at its current directory.
**/
class CorvaneClient {
  /** Flags of `setWndPos`. **/
  public static inline final POSITION = 1;

  public static inline final SIZE = 2;

  /** The server reads a longer parameter line as an empty one. **/
  static inline final MAX_LINE_BYTES = 1023;

  final connection:Connection;

  public function new(host:String = "127.0.0.1", port:Int = 54321) {
    connection = new Connection(host, port);
  }

  /** Milliseconds to wait for the connection and for each reply; 10,000 unless set. **/
  public function setTimeout(milliseconds:Int):Void {
    connection.timeout = milliseconds;
  }

  /** Ends the connection; commands without a reply fail as disconnected. **/
  public function close():Void {
    connection.close();
  }

  /** Creates or replaces a file. The text is stored as UTF-8; it cannot hold the codes 0 and 1. **/
  public function write(path:String, text:String, done:Outcome<Bool>->Void):Void {
    if (!isLine(path) || ~/[\x00\x01]/.match(text))
      done(Outcome.failed(new Failure(Failure.UNSENDABLE, "write")));
    else
      transmit("write", "write\n" + path + "\n" + text, nothing, done);
  }

  /** Creates one directory; gives its path. It is no failure when the directory is there already. **/
  public function makeDir(path:String, done:Outcome<String>->Void):Void {
    request("makeDir", [path], reply -> reply.hint, done);
  }

  /** A value of the registry; `root` is one of the five long names such as "HKEY_CURRENT_USER". **/
  public function regQueryValue(root:String, path:String, name:String, done:Outcome<String>->Void):Void {
    request("regQueryValue", [root, path, name], value, done);
  }

  /** Removes a file, or a directory with all that is in it. A path that is not there is no failure. **/
  public function delete(path:String, done:Outcome<Bool>->Void):Void {
    request("delete", [path], nothing, done);
  }

  /** Starts a program or opens a document or an address; success says that it was handed over. **/
  public function execute(target:String, done:Outcome<Bool>->Void):Void {
    request("execute", [target], nothing, done);
  }

  /**
    Copies a file, or what is in a directory into an existing directory. The extensions (without
    dot; null for no limit) choose files of a directory, not a single file.
  **/
  public function copy(source:String, destination:String, recursive:Bool, included:Null<Array<String>>, excluded:Null<Array<String>>,
      done:Outcome<Bool>->Void):Void {
    request("copy", [source, destination, recursive ? "true" : "false", list(included), list(excluded)], nothing, done);
  }

  /** Moves a file. A directory is moved only when it is empty, else it is copied and this fails. **/
  public function rename(source:String, destination:String, done:Outcome<Bool>->Void):Void {
    request("rename", [source, destination], nothing, done);
  }

  /** Writes a line into the server's log. Empty category: "ext.log"; empty priority: INFO. **/
  public function log(category:String, priority:String, message:String, done:Outcome<Bool>->Void):Void {
    request("log", [category, priority, message], nothing, done);
  }

  /** The byte at an offset, 0 to 255. **/
  public function readByte(path:String, offset:Int, done:Outcome<Int>->Void):Void {
    request("readByte", [path, Std.string(offset)], reply -> number(reply, "value"), done);
  }

  /** A whole file as text. Bytes 0 in it are left out. **/
  public function readText(path:String, done:Outcome<String>->Void):Void {
    request("readText", [path], reply -> reply.find("text"), done);
  }

  /** The entries of a directory, directories first, each group by name. **/
  public function listDir(path:String, done:Outcome<Array<Entry>>->Void):Void {
    request("listDir", [path], entries, done);
  }

  /** The home directory; with "desktop" the desktop, which is empty when there is none. **/
  public function userDir(which:String, done:Outcome<String>->Void):Void {
    request("userDir", [which], value, done);
  }

  /** The server's current directory. **/
  public function currentDir(done:Outcome<String>->Void):Void {
    request("currentDir", [], value, done);
  }

  /** The directory for temporary files. **/
  public function tempDir(done:Outcome<String>->Void):Void {
    request("tempDir", [], value, done);
  }

  /** The server refuses this always: its registry is read-only. **/
  public function regSetValue(root:String, path:String, name:String, value:String, done:Outcome<Bool>->Void):Void {
    request("regSetValue", [root, path, name, value], nothing, done);
  }

  /** Where a window is. Empty title: the Flash player's. **/
  public function getWndRect(window:String, done:Outcome<Rect>->Void):Void {
    request("getWndRect", [window], rect, done);
  }

  /** The screen; x and y are 0. **/
  public function getScreenRect(done:Outcome<Rect>->Void):Void {
    request("getScreenRect", [], rect, done);
  }

  /**
    Moves a window (flag POSITION), sizes it (flag SIZE), or both (their sum). Numbers without
    their flag are not sent. Empty title: the Flash player's.
  **/
  public function setWndPos(flags:Int, x:Int, y:Int, width:Int, height:Int, window:String, done:Outcome<Bool>->Void):Void {
    var lines = [Std.string(flags)];
    if (flags & POSITION != 0)
      lines = lines.concat([Std.string(x), Std.string(y)]);
    if (flags & SIZE != 0)
      lines = lines.concat([Std.string(width), Std.string(height)]);
    request("setWndPos", lines.concat([window]), nothing, done);
  }

  /** Brings a window to the front; refused always, on macOS and on Linux. **/
  public function bringToFront(window:String, done:Outcome<Bool>->Void):Void {
    request("bringToFront", [window], nothing, done);
  }

  /** Domains, servers of a domain or shares of a server; refused always, on macOS and on Linux. **/
  public function listNet(group:String, done:Outcome<Array<Entry>>->Void):Void {
    request("listNet", [group], entries, done);
  }

  /** The login name; empty when the server belongs to no log-in session. **/
  public function userName(done:Outcome<String>->Void):Void {
    request("userName", [], value, done);
  }

  /** The clipboard's text; refused always, on macOS and on Linux. **/
  public function clipboardGet(done:Outcome<String>->Void):Void {
    request("clipboardGet", [], value, done);
  }

  /** Ends the server; success is the end of the connection. Its configuration may refuse it. **/
  public function shutdown(done:Outcome<Bool>->Void):Void {
    connection.send(new Request("shutdown", "shutdown", true, (reply, failure) -> {
      if (failure != null)
        done(Outcome.failed(failure));
      else
        done(reply == null ? Outcome.success(true) : outcome(reply, nothing));
    }));
  }

  function request<T>(action:String, lines:Array<String>, convert:Reply->Null<T>, done:Outcome<T>->Void):Void {
    for (line in lines) {
      if (!isLine(line)) {
        done(Outcome.failed(new Failure(Failure.UNSENDABLE, action)));
        return;
      }
    }
    transmit(action, [action].concat(lines).join("\n"), convert, done);
  }

  function transmit<T>(action:String, text:String, convert:Reply->Null<T>, done:Outcome<T>->Void):Void {
    connection.send(new Request(action, text, false, (reply, failure) -> {
      done(failure == null ? outcome(reply, convert) : Outcome.failed(failure));
    }));
  }

  static function outcome<T>(reply:Reply, convert:Reply->Null<T>):Outcome<T> {
    if (!reply.ok)
      return Outcome.failed(new Failure(Failure.REFUSED, reply.action, reply.errno, reply.hint));
    var value = convert(reply);
    if (value == null)
      return Outcome.failed(new Failure(Failure.MALFORMED, reply.action));
    return Outcome.success(value);
  }

  /** Whether the text arrives as one parameter: no terminator, no line break, not too long. **/
  static function isLine(text:String):Bool {
    return !~/[\x00\x01\n]|\r$/.match(text) && haxe.io.Bytes.ofString(text).length <= MAX_LINE_BYTES;
  }

  static function list(extensions:Null<Array<String>>):String {
    return extensions == null ? "" : extensions.join(",");
  }

  static function nothing(reply:Reply):Null<Bool> {
    return true;
  }

  static function value(reply:Reply):Null<String> {
    return reply.find("value");
  }

  static function number(reply:Reply, id:String):Null<Int> {
    var text = reply.find(id);
    return text == null ? null : Std.parseInt(text);
  }

  static function entries(reply:Reply):Null<Array<Entry>> {
    return [for (detail in reply.details) new Entry(detail.id, detail.value, detail.extra)];
  }

  static function rect(reply:Reply):Null<Rect> {
    var x = number(reply, "x");
    var y = number(reply, "y");
    var width = number(reply, "width");
    var height = number(reply, "height");
    return x == null || y == null || width == null || height == null ? null : new Rect(x, y, width, height);
  }
}
