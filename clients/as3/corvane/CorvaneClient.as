package corvane {
  import flash.utils.ByteArray;

  /**
   * The Corvane server's commands as methods: one per command, with the command's name; only "delete",
   * a reserved word, is called delete_ here.
   *
   * Each returns at once and calls done(outcome:Outcome) exactly once with what the command came to:
   * later, or at once when a parameter holds what a request cannot carry (Failure.UNSENDABLE). The
   * commands are carried out one at a time in the order of the calls. The connection is made by the
   * first call, and made again by the next call after it was lost.
   *
   * Paths may use "/" or "\". They are the server's: relative ones start at its current directory.
   */
  public class CorvaneClient {
    /** Flags of setWndPos. */
    public static const POSITION:int = 1;
    public static const SIZE:int = 2;

    /** The server reads a longer parameter line as an empty one. */
    private static const MAX_LINE_BYTES:int = 1023;

    private var connection:Connection;

    public function CorvaneClient(host:String = "127.0.0.1", port:int = 54321) {
      connection = new Connection(host, port);
    }

    /** Milliseconds to wait for the connection and for each reply; 10,000 unless set. */
    public function setTimeout(milliseconds:int):void {
      connection.timeout = milliseconds;
    }

    /** Ends the connection; commands without a reply fail as disconnected. */
    public function close():void {
      connection.close();
    }

    /** Creates or replaces a file. The text is stored as UTF-8; it cannot hold the codes 0 and 1. */
    public function write(path:String, text:String, done:Function):void {
      if (!isLine(path) || /[\x00\x01]/.test(text))
        done(Outcome.failed(new Failure(Failure.UNSENDABLE, "write")));
      else
        transmit("write", "write\n" + path + "\n" + text, nothing, done);
    }

    /** Creates one directory; gives its path (String). It is no failure when it is there already. */
    public function makeDir(path:String, done:Function):void {
      request("makeDir", [path], hint, done);
    }

    /** A value (String) of the registry; root is one of the five long names such as "HKEY_CURRENT_USER". */
    public function regQueryValue(root:String, path:String, name:String, done:Function):void {
      request("regQueryValue", [root, path, name], value, done);
    }

    /** Removes a file, or a directory with all that is in it. A path that is not there is no failure. */
    public function delete_(path:String, done:Function):void {
      request("delete", [path], nothing, done);
    }

    /** Starts a program or opens a document or an address; success says that it was handed over. */
    public function execute(target:String, done:Function):void {
      request("execute", [target], nothing, done);
    }

    /**
     * Copies a file, or what is in a directory into an existing directory. The extensions (without
     * dot; null for no limit) choose files of a directory, not a single file.
     */
    public function copy(source:String, destination:String, recursive:Boolean, included:Array, excluded:Array,
        done:Function):void {
      request("copy", [source, destination, recursive ? "true" : "false", list(included), list(excluded)], nothing, done);
    }

    /** Moves a file. A directory is moved only when it is empty, else it is copied and this fails. */
    public function rename(source:String, destination:String, done:Function):void {
      request("rename", [source, destination], nothing, done);
    }

    /** Writes a line into the server's log. Empty category: "ext.log"; empty priority: INFO. */
    public function log(category:String, priority:String, message:String, done:Function):void {
      request("log", [category, priority, message], nothing, done);
    }

    /** The byte at an offset, 0 to 255 (int). */
    public function readByte(path:String, offset:int, done:Function):void {
      request("readByte", [path, offset.toString()], byte, done);
    }

    /** A whole file as text (String). Bytes 0 in it are left out. */
    public function readText(path:String, done:Function):void {
      request("readText", [path], text, done);
    }

    /** The entries of a directory (Array of Entry), directories first, each group by name. */
    public function listDir(path:String, done:Function):void {
      request("listDir", [path], entries, done);
    }

    /** The home directory (String); with "desktop" the desktop, which is empty when there is none. */
    public function userDir(which:String, done:Function):void {
      request("userDir", [which], value, done);
    }

    /** The server's current directory (String). */
    public function currentDir(done:Function):void {
      request("currentDir", [], value, done);
    }

    /** The directory for temporary files (String). */
    public function tempDir(done:Function):void {
      request("tempDir", [], value, done);
    }

    /** The server refuses this always: its registry is read-only. */
    public function regSetValue(root:String, path:String, name:String, value:String, done:Function):void {
      request("regSetValue", [root, path, name, value], nothing, done);
    }

    /** Where a window is (Rect). Empty title: the Flash player's. */
    public function getWndRect(window:String, done:Function):void {
      request("getWndRect", [window], rect, done);
    }

    /** The screen (Rect); x and y are 0. */
    public function getScreenRect(done:Function):void {
      request("getScreenRect", [], rect, done);
    }

    /**
     * Moves a window (flag POSITION), sizes it (flag SIZE), or both (their sum). Numbers without
     * their flag are not sent. Empty title: the Flash player's.
     */
    public function setWndPos(flags:int, x:int, y:int, width:int, height:int, window:String, done:Function):void {
      var lines:Array = [flags.toString()];
      if (flags & POSITION)
        lines.push(x.toString(), y.toString());
      if (flags & SIZE)
        lines.push(width.toString(), height.toString());
      lines.push(window);
      request("setWndPos", lines, nothing, done);
    }

    /** Brings a window to the front; refused always, on macOS and on Linux. */
    public function bringToFront(window:String, done:Function):void {
      request("bringToFront", [window], nothing, done);
    }

    /** Domains, servers of a domain or shares of a server (Array of Entry); refused on macOS and Linux. */
    public function listNet(group:String, done:Function):void {
      request("listNet", [group], entries, done);
    }

    /** The login name (String); empty when the server belongs to no log-in session. */
    public function userName(done:Function):void {
      request("userName", [], value, done);
    }

    /** The clipboard's text (String); refused always, on macOS and on Linux. */
    public function clipboardGet(done:Function):void {
      request("clipboardGet", [], value, done);
    }

    /** Ends the server; success is the end of the connection. Its configuration may refuse it. */
    public function shutdown(done:Function):void {
      connection.send(new Request("shutdown", "shutdown", true, function(reply:Reply, failure:Failure):void {
        if (failure != null)
          done(Outcome.failed(failure));
        else
          done(reply == null ? Outcome.success(true) : outcome(reply, nothing));
      }));
    }

    private function request(action:String, lines:Array, convert:Function, done:Function):void {
      for each (var line:String in lines) {
        if (!isLine(line)) {
          done(Outcome.failed(new Failure(Failure.UNSENDABLE, action)));
          return;
        }
      }
      transmit(action, [action].concat(lines).join("\n"), convert, done);
    }

    private function transmit(action:String, text:String, convert:Function, done:Function):void {
      connection.send(new Request(action, text, false, function(reply:Reply, failure:Failure):void {
        done(failure == null ? outcome(reply, convert) : Outcome.failed(failure));
      }));
    }

    private static function outcome(reply:Reply, convert:Function):Outcome {
      if (!reply.ok)
        return Outcome.failed(new Failure(Failure.REFUSED, reply.action, reply.errno, reply.hint));
      var value:* = convert(reply);
      if (value == null)
        return Outcome.failed(new Failure(Failure.MALFORMED, reply.action));
      return Outcome.success(value);
    }

    /** Whether the text arrives as one parameter: no terminator, no line break, not too long. */
    private static function isLine(text:String):Boolean {
      var bytes:ByteArray = new ByteArray();
      bytes.writeUTFBytes(text);
      return !/[\x00\x01\n]|\r$/.test(text) && bytes.length <= MAX_LINE_BYTES;
    }

    private static function list(extensions:Array):String {
      return extensions == null ? "" : extensions.join(",");
    }

    // Each of these takes the result out of a reply, or returns null when it is not there.

    private static function nothing(reply:Reply):* {
      return true;
    }

    private static function hint(reply:Reply):* {
      return reply.hint;
    }

    private static function value(reply:Reply):* {
      return reply.find("value");
    }

    private static function text(reply:Reply):* {
      return reply.find("text");
    }

    private static function byte(reply:Reply):* {
      return number(reply, "value");
    }

    private static function entries(reply:Reply):* {
      var found:Array = [];
      for each (var detail:Detail in reply.details)
        found.push(new Entry(detail.id, detail.value, detail.extra));
      return found;
    }

    private static function rect(reply:Reply):* {
      var numbers:Array = [number(reply, "x"), number(reply, "y"), number(reply, "width"), number(reply, "height")];
      return numbers.indexOf(null) >= 0 ? null : new Rect(numbers[0], numbers[1], numbers[2], numbers[3]);
    }

    private static function number(reply:Reply, id:String):* {
      var digits:Number = parseInt(reply.find(id), 10);
      return isNaN(digits) ? null : int(digits);
    }
  }
}
