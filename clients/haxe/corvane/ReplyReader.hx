package corvane;

/**
  Reads the server's reply text, which has one fixed form.

  This is not an XML parser, and must not become one: the server writes attribute values without
  escaping them, so a file called `a&b "c".txt` makes a reply that no XML parser accepts, and a file
  called `a&amp;b` would be read under another name. Only element text is escaped.
**/
class ReplyReader {
  static inline final BEGIN = '<CorvaneMsg><Header id="info" Type="RESULT" Action="';
  static inline final DETAIL = '<Detail id="';
  static inline final END = '</Header></CorvaneMsg>';

  final text:String;
  var at = 0;

  function new(text:String) {
    this.text = text;
  }

  /** Returns null when `text` is not a reply of the server. **/
  public static function parse(text:String):Null<Reply> {
    try {
      return new ReplyReader(text).reply();
    } catch (unexpected:UnexpectedText) {
      return null;
    }
  }

  function reply():Reply {
    expect(BEGIN);
    var action = upTo('" Result="');
    var ok = accept('SUCCESS"');
    if (!ok)
      expect('FAILED"');
    var errno = accept(' errno="') ? number(upTo('"')) : 0;
    var hint = "";
    if (accept(' hint="'))
      hint = upToElement('">');
    else
      expect('>');
    var details = [];
    while (accept(DETAIL))
      details.push(detail());
    expect(END);
    if (at != text.length)
      throw new UnexpectedText();
    return new Reply(action, ok, errno, hint, details);
  }

  function detail():Detail {
    var id = upTo('" extra="');
    var extra = upTo('"');
    var date = accept(' date="') ? upTo('"') : "";
    var size = accept(' size="') ? upTo('"') : "";
    if (accept('>'))
      return new Detail(id, extra, date, size, unescape(upTo('</Detail>')));
    expect(' Value="');
    return new Detail(id, extra, date, size, upToElement('" />'));
  }

  function accept(literal:String):Bool {
    if (!startsAt(at, literal))
      return false;
    at += literal.length;
    return true;
  }

  function expect(literal:String):Void {
    if (!accept(literal))
      throw new UnexpectedText();
  }

  /** The text before the next `mark`; goes on behind the mark. **/
  function upTo(mark:String):String {
    var end = text.indexOf(mark, at);
    if (end < 0)
      throw new UnexpectedText();
    return take(end, mark);
  }

  /** As upTo, but the mark counts only where an element follows: an unescaped value may hold it. **/
  function upToElement(mark:String):String {
    var end = text.indexOf(mark, at);
    while (end >= 0 && !startsAt(end + mark.length, DETAIL) && !startsAt(end + mark.length, END))
      end = text.indexOf(mark, end + 1);
    if (end < 0)
      throw new UnexpectedText();
    return take(end, mark);
  }

  function take(end:Int, mark:String):String {
    var taken = text.substring(at, end);
    at = end + mark.length;
    return taken;
  }

  function startsAt(position:Int, literal:String):Bool {
    return text.substr(position, literal.length) == literal;
  }

  static function number(digits:String):Int {
    var value = Std.parseInt(digits);
    if (value == null)
      throw new UnexpectedText();
    return value;
  }

  /** The ampersand comes last: `&amp;lt;` stands for `&lt;`. **/
  static function unescape(escaped:String):String {
    var plain = StringTools.replace(escaped, "&lt;", "<");
    plain = StringTools.replace(plain, "&gt;", ">");
    plain = StringTools.replace(plain, "&quot;", '"');
    plain = StringTools.replace(plain, "&apos;", "'");
    return StringTools.replace(plain, "&amp;", "&");
  }
}

private class UnexpectedText {
  public function new() {}
}
