import java.lang.management.ManagementFactory;
import java.lang.management.ThreadMXBean;
import java.math.BigInteger;
import java.security.SecureRandom;
import java.util.Arrays;
import org.bouncycastle.asn1.x9.X9ECParameters;
import org.bouncycastle.crypto.AsymmetricCipherKeyPair;
import org.bouncycastle.crypto.ec.CustomNamedCurves;
import org.bouncycastle.crypto.generators.ECKeyPairGenerator;
import org.bouncycastle.crypto.params.ECDomainParameters;
import org.bouncycastle.crypto.params.ECKeyGenerationParameters;
import org.bouncycastle.crypto.params.ParametersWithRandom;
import org.bouncycastle.crypto.signers.ECDSASigner;

/** Prints the processor's microseconds of a signature and of a verification, the JVM being warm. */
class BouncyCastle {
    static final int BLOCKS = 41;
    static final int BLOCK = 200;
    static final long WARM_NANOSECONDS = 3_000_000_000L;

    static final ThreadMXBean CLOCK = ManagementFactory.getThreadMXBean();

    static double medianOf(Runnable work) {
        long cold = CLOCK.getCurrentThreadCpuTime();
        while (CLOCK.getCurrentThreadCpuTime() - cold < WARM_NANOSECONDS) {
            work.run();
        }
        double[] times = new double[BLOCKS];
        for (int block = 0; block < BLOCKS; ++block) {
            long start = CLOCK.getCurrentThreadCpuTime();
            for (int i = 0; i < BLOCK; ++i) {
                work.run();
            }
            times[block] = (CLOCK.getCurrentThreadCpuTime() - start) / 1000.0 / BLOCK;
        }
        Arrays.sort(times);
        return times[BLOCKS / 2];
    }

    public static void main(String[] arguments) {
        SecureRandom random = new SecureRandom();
        X9ECParameters curve = CustomNamedCurves.getByName("sect163r2");
        ECKeyPairGenerator generator = new ECKeyPairGenerator();
        generator.init(new ECKeyGenerationParameters(new ECDomainParameters(curve), random));
        AsymmetricCipherKeyPair key = generator.generateKeyPair();
        byte[] digest = new byte[20];
        ECDSASigner signer = new ECDSASigner();
        signer.init(true, new ParametersWithRandom(key.getPrivate(), random));
        BigInteger[] signature = signer.generateSignature(digest);
        ECDSASigner verifier = new ECDSASigner();
        verifier.init(false, key.getPublic());
        System.out.println("sign " + medianOf(() -> signer.generateSignature(digest)));
        System.out.println("verify " + medianOf(() -> {
            if (!verifier.verifySignature(digest, signature[0], signature[1])) {
                throw new IllegalStateException("a signature does not verify");
            }
        }));
    }
}
