import corvane.Clock;
import corvane.CorvaneClient;
import corvane.Failure;
import corvane.Outcome;
import corvane.ReplyReader;
import corvane.Socket;

/** Runs the Haxe client without Flash: the socket and the clock beside this file stand in. **/
class ClientTest {
  static var failures = 0;

  static function main() {
    readsAReply();
    readsNamesThatAreNoXml();
    refusesWhatIsNoReply();
    sendsOneRequestAtATime();
    connectsAgainAfterALoss();
    doesNotRepeatALostRequest();
    givesUpAfterTheTimeOut();
    endsTheConnectionWhenOutOfStep();
    reportsTheErrorNumberAndTheHint();
    sendsNothingThatALineCannotCarry();
    sendsOnlyTheNumbersThatTheFlagsName();
    takesTheEndForTheAnswerToShutdown();
    doesNotTakeAFailedConnectionForAShutdown();
    tellsWhenAShutdownIsRefused();
    answersEverythingWhenClosed();
    Sys.println(failures == 0 ? "client: all tests passed" : 'client: $failures checks failed');
    Sys.exit(failures == 0 ? 0 : 1);
  }

  static function readsAReply() {
    var reply = ReplyReader.parse(envelope("listDir", "SUCCESS", ' errno="13" hint="/a/"',
      '<Detail id="file" extra="hr" date="d" size="0" Value="x" /><Detail id="text" extra="">&lt;a&amp;lt;&quot;&apos;</Detail>'));
    equal(reply.action, "listDir");
    equal(reply.ok, true);
    equal(reply.errno, 13);
    equal(reply.hint, "/a/");
    equal(reply.details[0].extra + "|" + reply.details[0].date + "|" + reply.details[0].size, "hr|d|0");
    equal(reply.find("text"), "<a&lt;\"'");
  }

  static function readsNamesThatAreNoXml() {
    var name = 'R&D "final" <2>.txt" />';
    var reply = ReplyReader.parse(envelope("listDir", "SUCCESS", ' hint="/a">b/"',
      '<Detail id="file" extra="" Value="$name" /><Detail id="file" extra="" Value="a&amp;b" />'));
    equal(reply.hint, '/a">b/');
    equal(reply.details[0].value, name);
    equal(reply.details[1].value, "a&amp;b");
  }

  static function refusesWhatIsNoReply() {
    var good = envelope("userName", "SUCCESS", "", '<Detail id="value" extra="" Value="" />');
    for (length in 0...good.length)
      equal(ReplyReader.parse(good.substr(0, length)), null);
    equal(ReplyReader.parse(good + " "), null);
    equal(ReplyReader.parse(StringTools.replace(good, " Value", "  Value")), null);
    equal(ReplyReader.parse(StringTools.replace(good, "SUCCESS", "Success")), null);
  }

  static function sendsOneRequestAtATime() {
    var client = new CorvaneClient();
    var order = [];
    client.currentDir(outcome -> order.push("first " + outcome.value));
    client.readByte("f", 7, outcome -> order.push("second " + outcome.value));
    equal(Socket.last.sent.length, 0);
    Socket.last.accept();
    equal(Socket.last.sent.join("|"), "currentDir");
    Socket.last.received(envelope("currentDir", "SUCCESS", "", '<Detail id="value" extra="" Value="/d/" />'));
    equal(Socket.last.sent.join("|"), "currentDir|readByte\nf\n7");
    Socket.last.received(envelope("readByte", "SUCCESS", "", '<Detail id="value" extra="" Value="255" />'));
    equal(order.join("|"), "first /d/|second 255");
    equal(Socket.last.openings, 1);
    equal(Clock.last.running, false);
  }

  static function connectsAgainAfterALoss() {
    var client = connected();
    Socket.last.drop();
    var result:Outcome<Bool> = null;
    client.delete("x", outcome -> result = outcome);
    equal(Socket.last.openings, 2);
    Socket.last.accept();
    Socket.last.received(envelope("delete", "SUCCESS", "", ""));
    equal(result.ok, true);
  }

  static function doesNotRepeatALostRequest() {
    var client = connected();
    var lost:Outcome<Bool> = null;
    client.delete("x", outcome -> lost = outcome);
    Socket.last.drop();
    equal(lost.failure.kind, Failure.DISCONNECTED);
    equal(Socket.last.sent.filter(text -> text == "delete\nx").length, 1);
    equal(Socket.last.openings, 1);
  }

  static function givesUpAfterTheTimeOut() {
    var client = connected();
    var late:Outcome<String> = null;
    client.tempDir(outcome -> late = outcome);
    Clock.last.elapse();
    equal(late.failure.kind, Failure.TIMED_OUT);
    equal(Socket.last.isOpen(), false);
  }

  static function endsTheConnectionWhenOutOfStep() {
    var client = connected();
    var result:Outcome<String> = null;
    client.tempDir(outcome -> result = outcome);
    Socket.last.received(envelope("userDir", "SUCCESS", "", '<Detail id="value" extra="" Value="/" />'));
    equal(result.failure.kind, Failure.MALFORMED);
    equal(Socket.last.isOpen(), false);

    connected();
    Socket.last.received(envelope("userName", "SUCCESS", "", ""));
    equal(Socket.last.isOpen(), false);
  }

  static function reportsTheErrorNumberAndTheHint() {
    var client = connected();
    var result:Outcome<Bool> = null;
    client.write("x", "a\nb", outcome -> result = outcome);
    equal(Socket.last.sent.pop(), "write\nx\na\nb");
    Socket.last.received(envelope("write", "FAILED", ' errno="2" hint="h"', ""));
    equal(result.failure.toString(), "write: refused, error 2, h");
    equal(result.ok, false);
  }

  static function sendsNothingThatALineCannotCarry() {
    var client = connected();
    var sent = Socket.last.sent.length;
    var kinds = [];
    var note = (outcome:Outcome<Bool>) -> kinds.push(outcome.failure.kind);
    for (path in ["a\nb", "a\r", "a\x00b", "a\x01b", StringTools.rpad("", "x", 1024), StringTools.rpad("", "é", 512)])
      client.delete(path, note);
    client.write("ok", "a\x01b", note);
    equal(kinds.join(" "), [for (_ in 0...7) Failure.UNSENDABLE].join(" "));
    equal(Socket.last.sent.length, sent);
    client.delete(StringTools.rpad("", "x", 1023), note);
    equal(Socket.last.sent.length, sent + 1);
  }

  static function sendsOnlyTheNumbersThatTheFlagsName() {
    var texts = [];
    for (flags in 1...4) {
      var client = connected();
      client.setWndPos(flags, 1, 2, 3, 4, "w", outcome -> {});
      texts.push(StringTools.replace(Socket.last.sent.pop(), "\n", " "));
    }
    equal(texts.join("|"), "setWndPos 1 1 2 w|setWndPos 2 3 4 w|setWndPos 3 1 2 3 4 w");
  }

  static function takesTheEndForTheAnswerToShutdown() {
    var client = connected();
    var result:Outcome<Bool> = null;
    client.shutdown(outcome -> result = outcome);
    equal(result, null);
    Socket.last.drop();
    equal(result.ok, true);
  }

  static function doesNotTakeAFailedConnectionForAShutdown() {
    var client = connected();
    Socket.last.drop();
    var result:Outcome<Bool> = null;
    client.shutdown(outcome -> result = outcome);
    Socket.last.drop();
    equal(result.failure.kind, Failure.DISCONNECTED);
  }

  static function tellsWhenAShutdownIsRefused() {
    var client = connected();
    var result:Outcome<Bool> = null;
    client.shutdown(outcome -> result = outcome);
    Socket.last.received(envelope("shutdown", "FAILED", "", ""));
    equal(result.ok, false);
    equal(result.failure.kind, Failure.REFUSED);
    equal(Socket.last.isOpen(), true);
  }

  static function answersEverythingWhenClosed() {
    var client = connected();
    var kinds = [];
    client.tempDir(outcome -> kinds.push(outcome.failure.action));
    client.currentDir(outcome -> kinds.push(outcome.failure.action));
    client.close();
    equal(kinds.join(" "), "tempDir currentDir");
  }

  /** A client whose first request has been answered. **/
  static function connected():CorvaneClient {
    var client = new CorvaneClient();
    client.userName(outcome -> {});
    Socket.last.accept();
    Socket.last.received(envelope("userName", "SUCCESS", "", '<Detail id="value" extra="" Value="" />'));
    return client;
  }

  static function envelope(action:String, result:String, attributes:String, details:String):String {
    return '<CorvaneMsg><Header id="info" Type="RESULT" Action="$action" Result="$result"$attributes>$details</Header></CorvaneMsg>';
  }

  static function equal(actual:Dynamic, expected:Dynamic, ?where:haxe.PosInfos) {
    if (actual == expected)
      return;
    failures++;
    Sys.println('${where.methodName}, line ${where.lineNumber}: got "$actual", expected "$expected"');
  }
}
