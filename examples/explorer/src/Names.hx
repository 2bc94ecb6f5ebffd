/** Paths and names as the server writes them: "/" between parts, directories end with "/". **/
class Names {
  public static function join(directory:String, name:String):String {
    return StringTools.endsWith(directory, "/") ? directory + name : directory + "/" + name;
  }

  /** Without the "/" at the end. **/
  public static function plain(name:String):String {
    return name.length > 1 && StringTools.endsWith(name, "/") ? name.substr(0, name.length - 1) : name;
  }

  /** The directory above; that of the root is the root. **/
  public static function parent(directory:String):String {
    return directory.substr(0, plain(directory).lastIndexOf("/") + 1);
  }

  /** In lower case, without the dot; empty when there is none. **/
  public static function extension(name:String):String {
    var dot = name.lastIndexOf(".");
    return dot <= 0 ? "" : name.substr(dot + 1).toLowerCase();
  }

  /** "notes.txt" becomes "notes copy.txt". **/
  public static function forCopy(name:String):String {
    var dot = name.lastIndexOf(".");
    return dot <= 0 ? name + " copy" : name.substr(0, dot) + " copy" + name.substr(dot);
  }

  public static function isText(name:String):Bool {
    var known = [
      "txt", "md", "log", "csv", "conf", "cfg", "ini", "xml", "json", "html", "htm", "css", "js", "as", "hx", "c", "cpp", "h", "py", "sh"
    ];
    return known.contains(extension(name));
  }
}
