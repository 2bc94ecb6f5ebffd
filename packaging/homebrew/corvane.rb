# Builds Corvane from the source archive of its release. script/release puts the archive's checksum in.
class Corvane < Formula
  desc "Local command server for Flash applications"
  homepage "https://corvane.example/"
  url "https://corvane.example/releases/corvane-2.7.5.7.tar.gz"
  sha256 "0000000000000000000000000000000000000000000000000000000000000000"
  license "MIT"

  depends_on "boost" => :build
  depends_on "cmake" => :build
  depends_on "ninja" => :build
  depends_on "log4cpp"
  depends_on :macos

  uses_from_macos "libedit"
  uses_from_macos "zlib"

  # The configuration is Homebrew's and not that of one version: an upgrade keeps it.
  def install
    system "cmake", "-S", ".", "-B", "build", "-G", "Ninja", "-DCORVANE_TESTS=OFF",
           "-DCORVANE_CONFIG_DIR=#{etc}/corvane", "-DCMAKE_INSTALL_MANDIR=#{man}", *std_cmake_args
    system "cmake", "--build", "build"
    system "cmake", "--install", "build", "--component", "corvane"
  end

  def caveats
    <<~EOS
      The configuration is #{etc}/corvane/corvane.conf. There is no password: whoever can connect can do
      what you can do.

      The log is cv54321.log beside the server, in #{opt_lib}/corvane, and goes with that version. To move
      windows the server needs the Accessibility permission; #{opt_share}/doc/corvane/macos.md says how
      to give it, and what to do about the log.
    EOS
  end

  service do
    run [opt_bin/"corvane"]
    run_type :immediate
    keep_alive crashed: true
    process_type :interactive
  end

  test do
    # A copy with a configuration of its own, so that neither the port nor the log is that of a server
    # that runs already.
    port = free_port.to_s
    cp_r lib/"corvane", testpath/"server"
    rm testpath/"server/corvane.conf"
    (testpath/"server/corvane.conf").write "PORT=#{port}\n"
    server = spawn((testpath/"server/corvane").to_s, out: File::NULL, err: File::NULL)
    begin
      ask = [bin/"corvanectl", "--port", port, "userDir"]
      30.times { quiet_system(*ask) ? break : sleep(1) }
      assert_equal "#{testpath}\n", shell_output(ask.join(" "))
    ensure
      Process.kill "TERM", server
      Process.wait server
    end
  end
end
