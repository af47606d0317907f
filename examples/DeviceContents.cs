// Prints the tracks of the attached player or phone, then a phone's files.
//
//   mcs DeviceContents.cs && LD_LIBRARY_PATH=/where/it/is mono DeviceContents.exe    # Linux, Mono
//   csc /platform:x86 DeviceContents.cs                                              # Windows
//
// On Windows quaylink.dll lies beside the program.
using System;
using System.Collections.Generic;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

// The ten functions. A boolean is one byte; a string is bytes that end with a zero, for the
// marshaller's own strings are in a code page that the system chooses.
static class Quaylink {
  [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
  public delegate void EnumFileCallback(IntPtr devicePath, IntPtr context);

  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  public static extern UIntPtr InitializeIPod();

  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  public static extern void TerminateIPod();

  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  [return: MarshalAs(UnmanagedType.U1)]
  public static extern bool IsIPodConnected();

  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  [return: MarshalAs(UnmanagedType.U1)]
  public static extern bool ConnectIPod();

  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  [return: MarshalAs(UnmanagedType.U1)]
  public static extern bool DisconnectIPod();

  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  [return: MarshalAs(UnmanagedType.U1)]
  public static extern bool CopyITunesDB(byte[] destination);

  // `records` has room for maxRecords times Records.Size bytes; null with 0, to count.
  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  public static extern int ParseITunesDB(byte[] database, int maxRecords, [Out] byte[] records);

  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  [return: MarshalAs(UnmanagedType.U1)]
  public static extern bool CopyFileFromIPod(uint index, byte[] destination);

  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  [return: MarshalAs(UnmanagedType.U1)]
  public static extern bool EnumGenericFileFromIPod([MarshalAs(UnmanagedType.U1)] bool autoConnect,
                                                    EnumFileCallback callback, IntPtr context);

  [DllImport("quaylink", CallingConvention = CallingConvention.Cdecl)]
  [return: MarshalAs(UnmanagedType.U1)]
  public static extern bool CopyGenericFileFromIPod([MarshalAs(UnmanagedType.U1)] bool autoConnect,
                                                    byte[] devicePath, byte[] destination);
}

// Strings of the library and what they are in C#.
static class Text {
  // Local paths and records: the ANSI code page on Windows, UTF-8 elsewhere.
  public static readonly Encoding Local =
      Path.DirectorySeparatorChar == '\\' ? Encoding.GetEncoding(0) : new UTF8Encoding(false);

  public static byte[] ToLocal(string text) { return Local.GetBytes(text + "\0"); }

  public static string FromLocal(byte[] bytes, int begin, int size) {
    int end = Array.IndexOf(bytes, (byte)0, begin, size);
    return Local.GetString(bytes, begin, end - begin);
  }

  // A path as the phone has it, which CopyGenericFileFromIPod wants back byte for byte.
  public static byte[] Copy(IntPtr text) {
    int length = 0;
    while (Marshal.ReadByte(text, length) != 0) ++length;
    var bytes = new byte[length + 1];
    Marshal.Copy(text, bytes, 0, length);
    return bytes;
  }
}

// The records of a database: four strings of 256 bytes each.
class Records {
  public const int Size = 1024;
  public readonly int Count;
  readonly byte[] bytes;

  public Records(string database) {
    byte[] path = Text.ToLocal(database);
    int count = Quaylink.ParseITunesDB(path, 0, null);
    bytes = new byte[count * Size];
    // The file is parsed again, and may have changed: this count is the one that holds.
    Count = Quaylink.ParseITunesDB(path, count, bytes);
  }

  public string Location(int index) { return Field(index, 0); }
  public string Artist(int index) { return Field(index, 256); }
  public string Title(int index) { return Field(index, 512); }
  public string Album(int index) { return Field(index, 768); }

  string Field(int index, int offset) { return Text.FromLocal(bytes, index * Size + offset, 256); }
}

static class DeviceContents {
  static Records Tracks() {
    string database = Path.GetTempFileName();
    try {
      if (!Quaylink.CopyITunesDB(Text.ToLocal(database))) {
        throw new IOException("the music database could not be copied");
      }
      return new Records(database);
    } finally {
      File.Delete(database);
    }
  }

  // The paths of a phone's files. A player in disk mode gives none.
  static List<byte[]> Files() {
    var found = new List<byte[]>();
    // No exception may leave the callback: this one only collects.
    Quaylink.EnumFileCallback collect = (path, context) => found.Add(Text.Copy(path));
    bool listed = Quaylink.EnumGenericFileFromIPod(true, collect, IntPtr.Zero);
    // The library holds a bare pointer to it, of which the garbage collector knows nothing.
    GC.KeepAlive(collect);
    if (!listed) throw new IOException("the device's files could not be listed");
    return found;
  }

  static void Print(TextWriter output) {
    if (!Quaylink.IsIPodConnected()) throw new IOException("no player or phone is attached");
    Records tracks = Tracks();
    for (int i = 0; i < tracks.Count; ++i) {
      output.WriteLine("{0}\t{1}\t{2}", tracks.Artist(i), tracks.Title(i), tracks.Location(i));
    }
    foreach (byte[] path in Files()) {
      output.WriteLine(Encoding.UTF8.GetString(path, 0, path.Length - 1));
    }
  }

  static int Main() {
    if (Quaylink.InitializeIPod() == UIntPtr.Zero) return 1;
    try {
      using (var output = new StreamWriter(Console.OpenStandardOutput(), new UTF8Encoding(false))) {
        Print(output);
      }
      return 0;
    } catch (IOException error) {
      Console.Error.WriteLine("DeviceContents: " + error.Message);
      return 1;
    } finally {
      Quaylink.TerminateIPod();
    }
  }
}
