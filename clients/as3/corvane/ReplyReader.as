package corvane {
  /**
   * Reads the server's reply text, which has one fixed form.
   *
   * This is not an XML parser, and must not become one: the server writes attribute values without
   * escaping them, so a file called  a&b "c".txt  makes a reply that no XML parser accepts, and a file
   * called  a&amp;b  would be read under another name. Only element text is escaped.
   */
  public class ReplyReader {
    private static const BEGIN:String = '<CorvaneMsg><Header id="info" Type="RESULT" Action="';
    private static const DETAIL:String = '<Detail id="';
    private static const END:String = '</Header></CorvaneMsg>';

    private var text:String;
    private var at:int = 0;

    public function ReplyReader(text:String) {
      this.text = text;
    }

    /** Returns null when the text is not a reply of the server. */
    public static function parse(text:String):Reply {
      try {
        return new ReplyReader(text).reply();
      } catch (unexpected:ArgumentError) {
      }
      return null;
    }

    private function reply():Reply {
      var reply:Reply = new Reply();
      expect(BEGIN);
      reply.action = upTo('" Result="');
      reply.ok = accept('SUCCESS"');
      if (!reply.ok)
        expect('FAILED"');
      if (accept(' errno="'))
        reply.errno = parseInt(upTo('"'), 10);
      if (accept(' hint="'))
        reply.hint = upToElement('">');
      else
        expect('>');
      while (accept(DETAIL))
        reply.details.push(detail());
      expect(END);
      if (at != text.length)
        throw new ArgumentError();
      return reply;
    }

    private function detail():Detail {
      var detail:Detail = new Detail();
      detail.id = upTo('" extra="');
      detail.extra = upTo('"');
      if (accept(' date="'))
        detail.date = upTo('"');
      if (accept(' size="'))
        detail.size = upTo('"');
      if (accept('>')) {
        detail.value = unescapeText(upTo('</Detail>'));
      } else {
        expect(' Value="');
        detail.value = upToElement('" />');
      }
      return detail;
    }

    private function accept(literal:String):Boolean {
      if (!startsAt(at, literal))
        return false;
      at += literal.length;
      return true;
    }

    private function expect(literal:String):void {
      if (!accept(literal))
        throw new ArgumentError();
    }

    /** The text before the next mark; goes on behind the mark. */
    private function upTo(mark:String):String {
      var end:int = text.indexOf(mark, at);
      if (end < 0)
        throw new ArgumentError();
      return take(end, mark);
    }

    /** As upTo, but the mark counts only where an element follows: an unescaped value may hold it. */
    private function upToElement(mark:String):String {
      var end:int = text.indexOf(mark, at);
      while (end >= 0 && !startsAt(end + mark.length, DETAIL) && !startsAt(end + mark.length, END))
        end = text.indexOf(mark, end + 1);
      if (end < 0)
        throw new ArgumentError();
      return take(end, mark);
    }

    private function take(end:int, mark:String):String {
      var taken:String = text.substring(at, end);
      at = end + mark.length;
      return taken;
    }

    private function startsAt(position:int, literal:String):Boolean {
      return text.substr(position, literal.length) == literal;
    }

    /** The ampersand comes last: &amp;lt; stands for &lt; */
    private static function unescapeText(escaped:String):String {
      var plain:String = escaped.split("&lt;").join("<");
      plain = plain.split("&gt;").join(">");
      plain = plain.split("&quot;").join('"');
      plain = plain.split("&apos;").join("'");
      return plain.split("&amp;").join("&");
    }
  }
}
