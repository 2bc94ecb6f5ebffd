import corvane.CorvaneClient;
import corvane.Entry;
import corvane.Failure;
import corvane.Outcome;

/** What the explorer does to files: single commands, and chains of them where the protocol needs it. **/
class FileWork {
  final client:CorvaneClient;
  final done:(text:String, select:String) -> Void;
  final failed:(text:String) -> Void;

  /** `done` gets what was done and the name that should be selected afterwards. **/
  public function new(client:CorvaneClient, done:(String, String) -> Void, failed:String->Void) {
    this.client = client;
    this.done = done;
    this.failed = failed;
  }

  public function makeDirectory(directory:String, name:String):Void {
    client.makeDir(Names.join(directory, name), after(() -> done('Folder "$name" created', name), "create", name));
  }

  public function writeFile(directory:String, name:String, text:String):Void {
    client.write(Names.join(directory, name), text, after(() -> done('"$name" written', name), "write", name));
  }

  public function remove(directory:String, entry:Entry):Void {
    var name = Names.plain(entry.name);
    client.delete(Names.join(directory, name), after(() -> done('"$name" deleted', ""), "delete", name));
  }

  /**
    Opens a file with its application, on the machine of the server, or starts a program. The server
    cuts its target at a "?" and takes ":/" for an address: it would open something else.
  **/
  public function open(path:String, opened:(text:String) -> Void):Void {
    var name = path.substr(path.lastIndexOf("/") + 1);
    if (~/\?|:\//.match(path))
      failed('Could not open "$name": the server opens no path with "?" or ":/" in it');
    else
      client.execute(path, after(() -> opened('"$name" handed to its application'), "open", name));
  }

  public function copy(directory:String, entry:Entry, name:String):Void {
    copyTo(directory, entry, name, () -> done('Copied to "$name"', name));
  }

  /** The server moves only an empty directory in one command, so a directory is copied and removed. **/
  public function rename(directory:String, entry:Entry, name:String):Void {
    var old = Names.plain(entry.name);
    var finish = () -> done('"$old" renamed to "$name"', name);
    if (entry.isDirectory())
      copyTo(directory, entry, name, () -> client.delete(Names.join(directory, old), after(finish, "remove", old)));
    else
      client.rename(Names.join(directory, old), Names.join(directory, name), after(finish, "rename", old));
  }

  /** The server copies what is in a directory, so the new directory has to be made first. **/
  function copyTo(directory:String, entry:Entry, name:String, next:() -> Void):Void {
    var source = Names.join(directory, Names.plain(entry.name));
    var destination = Names.join(directory, name);
    var copy = () -> client.copy(source, destination, true, null, null, after(next, "copy", entry.name));
    if (entry.isDirectory())
      client.makeDir(destination, after(copy, "create", name));
    else
      copy();
  }

  function after<T>(next:() -> Void, verb:String, name:String):Outcome<T>->Void {
    return outcome -> {
      if (outcome.ok)
        next();
      else
        failed('Could not $verb "${Names.plain(name)}": ${reason(outcome.failure)}');
    };
  }

  public static function reason(failure:Failure):String {
    return switch (failure.kind) {
      case Failure.REFUSED: failure.errno == 0 ? "the server refused" : "error " + failure.errno;
      case Failure.UNSENDABLE: "the name cannot be sent";
      case Failure.DISCONNECTED: "no connection to the server";
      case Failure.TIMED_OUT: "the server does not answer";
      default: "the answer was not understood";
    };
  }
}
